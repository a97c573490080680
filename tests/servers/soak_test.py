"""Servers answer every request of hundreds of simultaneous clients, and their memory does not grow.

ZN_SOAK_SECONDS sets the duration for each server, 5 by default.
"""

import os
import threading
import time
import unittest

from apache_test import Apache, ApacheWithDaemon
from busybox_test import Busybox
from lighttpd_test import Lighttpd
from nginx_test import Nginx
from server_test import BODY

SECONDS = float(os.environ.get('ZN_SOAK_SECONDS') or 5)
CLIENTS = 200

# busybox httpd queues nine connections. More clients would have to retry.
CLIENTS_OF_BUSYBOX = 8

# The limit of a server's growth. With 200 clients, lighttpd 1.4.69 grows by about 50 bytes for each
# request; the other servers' growth does not depend on the requests. A leaked connection, request or
# response is larger than the limit.
GROWTH_BYTES = 1 << 20
GROWTH_BYTES_PER_REQUEST = 128


def ask(server, clients, seconds):
    """Sends requests from several simultaneous clients. Returns the number of responses and the faults."""
    answers, failures = [], []
    end = time.monotonic() + seconds

    def client():
        while time.monotonic() < end:
            try:
                response, body = server.get()
                if (response.status, body) != (200, BODY):
                    failures.append((response.status, body[:200]))
            except Exception as error:
                failures.append(repr(error))
            answers.append(None)

    threads = [threading.Thread(target=client) for _ in range(clients)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    return len(answers), failures


class Soak(unittest.TestCase):

    def test_servers(self):
        for make in (Lighttpd, Busybox, Apache, ApacheWithDaemon, Nginx):
            with self.subTest(make.__name__), make() as server:
                clients = CLIENTS_OF_BUSYBOX if make is Busybox else CLIENTS
                _, failures = ask(server, clients, SECONDS / 4)
                self.assertEqual(failures, [])
                before = server.memory()
                count, failures = ask(server, clients, SECONDS * 3 / 4)
                after = server.memory()
                print(f'{make.__name__}: {count} requests of {clients} clients in '
                      f'{SECONDS * 3 / 4:.0f} s, {len(failures)} failed, '
                      f'{before} KiB before and {after} KiB after', flush=True)
                self.assertEqual(failures, [])
                self.assertGreater(count, 0)
                self.assertLess((after - before) * 1024,
                                GROWTH_BYTES + GROWTH_BYTES_PER_REQUEST * count)


if __name__ == '__main__':
    unittest.main()
