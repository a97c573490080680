"""The camera's page in a browser. The server is a fake whose responses each test chooses."""

import contextlib
import http.server
import json
import os
import re
import socket
import threading
import time
import unittest
from pathlib import Path

from selenium.webdriver.common.keys import Keys

from browser import browser

PAGE = Path(os.environ['ZN_SOURCES'], 'packaging/www/index.html')
PATIENCE = 'const PATIENCE = 30000;'


def listing(*sizes):
    """Returns the body of the program's response."""
    return json.dumps([{'resolution': size, 'default': index == 0}
                       for index, size in enumerate(sizes)])


class Camera(http.server.ThreadingHTTPServer):
    """Serves the page and the list. `self.answer` is the list's content, or a function that responds."""

    daemon_threads = True

    def __init__(self):
        super().__init__(('127.0.0.1', 0), Handler)
        self.page = PAGE.read_text(encoding='utf-8')
        self.answer = listing('160x120', '176x144', '320x180')
        self.paths = []
        self.connections = []
        self.address = f'http://127.0.0.1:{self.server_port}/'
        threading.Thread(target=self.serve_forever, daemon=True).start()

    def get_request(self):
        connection, address = super().get_request()
        self.connections.append(connection)
        return connection, address

    def stop(self):
        """Also closes connections that the browser has opened in advance."""
        self.shutdown()
        self.server_close()
        for connection in self.connections:
            with contextlib.suppress(OSError):
                connection.shutdown(socket.SHUT_RDWR)


class Handler(http.server.BaseHTTPRequestHandler):

    def do_GET(self):
        self.server.paths.append(self.path)
        if self.path == '/':
            self.respond(200, self.server.page, 'text/html')
        elif callable(self.server.answer):
            self.server.answer(self)
        else:
            self.respond(200, self.server.answer)

    def respond(self, status, text, kind='text/plain'):
        body = text.encode()
        self.send_response(status)
        self.send_header('Content-Type', kind)
        self.send_header('Content-Length', str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *_):
        pass


def fail_with(status):
    return lambda handler: handler.respond(status, 'Sorry')


def close_silently(handler):
    handler.close_connection = True


def close_within_the_answer(handler):
    handler.send_response(200)
    handler.send_header('Content-Length', '100')
    handler.end_headers()
    handler.wfile.write(b'[{')
    handler.close_connection = True


def wait_long(_):
    time.sleep(5)


SILENT = "The camera's SDK did not start"
MALFORMED = "The camera's answer is not a list of sizes"

# The name of each fault, the response that causes it, and the page's error message.
FAULTS = (
    ('no answer at all', close_silently, SILENT),
    ('part of an answer', close_within_the_answer, SILENT),
    ('empty answer', '', SILENT),
    ('blank answer', '\n', SILENT),
    ('server error', fail_with(500), "The camera's server failed (status 500)"),
    ('gateway error', fail_with(502), "The camera's server failed (status 502)"),
    ('no such file', fail_with(404), "The camera's server has no list (status 404)"),
    ('forbidden', fail_with(403), "The camera's server has no list (status 403)"),
    ('empty list', '[]', 'The camera offers no small size'),
    ('no JSON', '[{"resolution": "160x120", "default": true }', MALFORMED),
    ('markup', '<img src=x onerror="document.title = 1">', MALFORMED),
    ('no list', '{"resolution": "160x120", "default": true }', MALFORMED),
    ('null', 'null', MALFORMED),
    ('list of nulls', '[null]', MALFORMED),
    ('list of texts', '["160x120"]', MALFORMED),
    ('no default', '[{"resolution": "160x120"}]', MALFORMED),
    ('default that is text', '[{"resolution": "160x120", "default": "true"}]', MALFORMED),
    ('no size', '[{"resolution": "large", "default": true}]', MALFORMED),
    ('negative size', '[{"resolution": "-1x120", "default": true}]', MALFORMED),
    ('one good and one bad', listing('160x120', '160x'), MALFORMED),
)

# Returns the contrast of every visible text with its background, the lowest first.
CONTRASTS = r'''
const numbers = colour => colour.match(/[\d.]+/g).map(Number);
const luminance = colour => numbers(colour).slice(0, 3)
    .map(part => part / 255)
    .map(part => part <= 0.04045 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4)
    .reduce((sum, part, index) => sum + part * [0.2126, 0.7152, 0.0722][index], 0);
const behind = element => {
    const colour = getComputedStyle(element).backgroundColor;
    return numbers(colour)[3] === 0 ? behind(element.parentElement) : colour;
};
return [...document.body.querySelectorAll("*")]
    .filter(element => element.checkVisibility() && element.tagName !== "SCRIPT" &&
        [...element.childNodes].some(node => node.nodeType === 3 && node.data.trim() !== ""))
    .map(element => {
        const [dark, light] = [getComputedStyle(element).color, behind(element)]
            .map(luminance).sort((a, b) => a - b);
        return [(light + 0.05) / (dark + 0.05), element.textContent];
    }).sort((a, b) => a[0] - b[0]);
'''


class PageTest(unittest.TestCase):
    """A test with a fake camera of its own, and a browser that all tests of the class share."""

    @classmethod
    def setUpClass(cls):
        cls.page = cls.enterClassContext(browser())

    def setUp(self):
        self.camera = Camera()
        self.addCleanup(self.camera.stop)
        self.page.resize(1000)
        self.page.use_colours('light')

    def open(self, answer=None):
        if answer is not None:
            self.camera.answer = answer
        self.page.open(self.camera.address)


class Choice(PageTest):

    def test_is_of_the_sizes_in_their_order_with_the_default_chosen(self):
        self.open(listing('160x120', '176x144', '320x180'))
        self.assertEqual(self.page.sizes, ['160 × 120', '176 × 144', '320 × 180'])
        self.assertEqual(self.page.default, ['160 × 120'])
        self.assertEqual(self.page.chosen, ('160x120', '160 × 120'))
        self.assertEqual(self.page.status, 'The camera offers 3 sizes.')
        self.assertIsNone(self.page.note)

    def test_starts_at_the_default_wherever_that_is(self):
        self.open('[{"resolution": "1x2", "default": false}, {"resolution": "3x4", "default": true}]')
        self.assertEqual(self.page.chosen, ('3x4', '3 × 4'))
        self.assertEqual(self.page.default, ['3 × 4'])

    def test_of_one_size(self):
        self.open(listing('0x0'))
        self.assertEqual((self.page.sizes, self.page.chosen), (['0 × 0'], ('0x0', '0 × 0')))
        self.assertEqual(self.page.status, 'The camera offers one size.')

    def test_follows_the_mouse(self):
        self.open()
        self.page.find_all('.size')[2].click()
        self.assertEqual(self.page.chosen, ('320x180', '320 × 180'))

    def test_follows_the_keyboard(self):
        self.open()
        keys = self.page.driver.switch_to.active_element
        keys.send_keys(Keys.TAB)
        self.assertEqual(self.page.driver.switch_to.active_element.text, 'Ask again')
        self.page.driver.switch_to.active_element.send_keys(Keys.TAB)
        self.page.driver.switch_to.active_element.send_keys(Keys.ARROW_DOWN)
        self.assertEqual(self.page.chosen, ('176x144', '176 × 144'))
        self.page.driver.switch_to.active_element.send_keys(Keys.ARROW_UP, Keys.ARROW_UP)
        self.assertEqual(self.page.chosen, ('320x180', '320 × 180'))

    def test_shows_where_the_keyboard_is(self):
        self.open()
        self.page.driver.switch_to.active_element.send_keys(Keys.TAB)
        for shown in ('#again', '.size'):
            style = 'return getComputedStyle(document.querySelector(arguments[0])).outlineStyle'
            self.assertEqual(self.page.run(style, shown), 'solid')
            self.page.driver.switch_to.active_element.send_keys(Keys.TAB)

    def test_is_named_for_those_who_cannot_see_it(self):
        self.open()
        entries = self.page.find_all('.size input')
        self.assertEqual([(entry.aria_role, entry.accessible_name) for entry in entries],
                         [('radio', '160 × 120 default'), ('radio', '176 × 144'),
                          ('radio', '320 × 180')])
        group = self.page.find('fieldset')
        self.assertEqual((group.aria_role, group.accessible_name), ('group', 'Choose a size'))
        self.assertEqual(self.page.find('#stage').accessible_name, 'The sizes, drawn to scale')
        self.assertEqual(self.page.find('#status').aria_role, 'status')

    def test_is_drawn_to_scale(self):
        sizes = {'16x9': (16, 9), '160x120': (160, 120), '176x144': (176, 144), '320x200': (320, 200)}
        self.open(listing(*sizes))
        box = ('const box = arguments[0].getBoundingClientRect();'
               'return [box.width, box.height, box.left, box.bottom]')
        for selector in ('#stage rect:not(.frame)', '.size rect'):
            boxes = [self.page.run(box, rect) for rect in self.page.find_all(selector)]
            scale = boxes[-1][0] / 320
            self.assertGreater(scale, 0.1)
            for drawn, (width, height) in zip(boxes, sizes.values(), strict=True):
                self.assertAlmostEqual(drawn[0], width * scale, delta=0.1)
                self.assertAlmostEqual(drawn[1], height * scale, delta=0.1)
        boxes = [self.page.run(box, rect) for rect in self.page.find_all('#stage rect')]
        self.assertEqual(len({(round(left), round(bottom)) for _, _, left, bottom in boxes}), 1)

    def test_marks_the_chosen_rectangle(self):
        self.open()
        self.page.find_all('.size')[1].click()
        chosen = self.page.find_all('#stage rect.chosen')
        self.assertEqual([rect.get_attribute('width') for rect in chosen], ['176'])


class Fault(PageTest):

    def test_has_its_own_message_and_leaves_no_choice(self):
        for name, answer, title in FAULTS:
            with self.subTest(name):
                self.open(answer)
                self.assertEqual(self.page.note, title)
                self.assertEqual(self.page.sizes, [])
                self.assertEqual(self.page.status, 'There is nothing to choose.')
                self.assertEqual(self.page.find('[role=alert] h2').text, title)
                self.assertGreater(len(self.page.find('#note p').text), 40)

    def test_of_a_server_that_has_gone(self):
        self.open()
        self.camera.stop()
        self.page.ask_again()
        self.assertEqual((self.page.note, self.page.sizes), ('The camera cannot be reached', []))

    def test_of_a_camera_that_does_not_answer(self):
        self.assertIn(PATIENCE, self.camera.page)
        self.camera.page = self.camera.page.replace(PATIENCE, 'const PATIENCE = 400;')
        self.open(wait_long)
        self.assertEqual(self.page.note, 'The camera does not answer')

    def test_of_a_page_that_was_opened_as_a_file(self):
        self.page.open(PAGE.as_uri())
        self.assertEqual(self.page.note, 'This page must come from the camera')

    def test_of_a_malformed_answer_shows_its_beginning_as_text(self):
        answer = '<b>' + 'x' * 1000
        self.open(answer)
        self.assertEqual(self.page.find('#note pre').text, answer[:500])
        self.assertEqual(self.page.find_all('#note b'), [])

    def test_is_over_when_the_camera_answers(self):
        self.open(close_silently)
        self.assertEqual(self.page.note, SILENT)
        self.camera.answer = listing('7x199')
        self.page.ask_again()
        self.assertEqual((self.page.note, self.page.sizes), (None, ['7 × 199']))

    def test_of_a_browser_without_javascript_leads_to_the_list(self):
        self.page.tell('Emulation.setScriptExecutionDisabled', value=True)
        self.addCleanup(self.page.tell, 'Emulation.setScriptExecutionDisabled', value=False)
        self.page.driver.get(self.camera.address)
        self.assertEqual(self.page.find('noscript a').get_attribute('href'),
                         self.camera.address + 'cgi-bin/resolution')


class Appearance(PageTest):

    STATES = (listing('160x120', '176x144', '320x180'), '[]', 'x' * 400)

    def test_fits_narrow_screens(self):
        for width in (320, 390, 768):
            self.page.resize(width)
            for answer in self.STATES:
                with self.subTest(width=width, answer=answer[:9]):
                    self.open(answer)
                    wide = self.page.run('return document.documentElement.scrollWidth')
                    self.assertLessEqual(wide, width)

    def test_has_targets_large_enough_for_fingers(self):
        self.page.resize(320)
        self.open()
        for target in (self.page.find('#again'), *self.page.find_all('.size')):
            self.assertGreaterEqual(target.size['height'], 44)

    def test_is_legible_in_light_and_dark(self):
        backgrounds = set()
        for scheme in ('light', 'dark'):
            self.page.use_colours(scheme)
            for answer in self.STATES:
                with self.subTest(scheme=scheme, answer=answer[:9]):
                    self.open(answer)
                    contrasts = self.page.run(CONTRASTS)
                    self.assertGreater(len(contrasts), 3)
                    self.assertGreaterEqual(contrasts[0][0], 4.5, contrasts[0])
            backgrounds.add(self.page.run(
                'return getComputedStyle(document.documentElement).backgroundColor'))
        self.assertEqual(len(backgrounds), 2)


class Requests(PageTest):

    def test_go_only_to_the_camera(self):
        self.page.driver.get_log('performance')
        self.open()
        self.page.ask_again()
        messages = [json.loads(entry['message'])['message']
                    for entry in self.page.driver.get_log('performance')]
        addresses = [message['params']['request']['url'] for message in messages
                     if message['method'] == 'Network.requestWillBeSent']
        # The browser's first tab requests internal pages (chrome://...).
        sent = [address for address in addresses if re.match('(http|ws)s?:', address)]
        self.assertEqual(sent, [self.camera.address,
                                *2 * [self.camera.address + 'cgi-bin/resolution']])
        self.assertEqual(self.camera.paths, ['/', *2 * ['/cgi-bin/resolution']])


if __name__ == '__main__':
    unittest.main()
