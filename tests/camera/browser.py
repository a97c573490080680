"""Runs the distribution's Chromium without a window, and reads the camera's page in it."""

import contextlib
import tempfile

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait

PATIENCE = 60  # seconds to wait for the page; a busy machine is slow

# --no-sandbox lets root run the browser. --disable-dev-shm-usage is for containers with little shared
# memory. The last three prevent requests that the page did not make.
OPTIONS = ('--no-sandbox', '--disable-dev-shm-usage', '--headless', '--disable-gpu',
           '--disable-quic', '--no-first-run', '--disable-background-networking',
           '--disable-component-update', '--disable-sync')

ASKING = 'Asking the camera…'


class Page:
    """The camera's page, open in a browser."""

    def __init__(self, driver):
        self.driver = driver

    def open(self, address):
        self.driver.get(address)
        self.wait()

    def ask_again(self):
        # wait() must not take the previous status for the new one.
        self.run('document.querySelector("#status").textContent = arguments[0]', ASKING)
        self.find('#again').click()
        self.wait()

    def wait(self):
        WebDriverWait(self.driver, PATIENCE).until(lambda _: self.status != ASKING)

    def find(self, selector):
        return self.driver.find_element(By.CSS_SELECTOR, selector)

    def find_all(self, selector):
        return self.driver.find_elements(By.CSS_SELECTOR, selector)

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def tell(self, command, **parameters):
        """Sends a command of the Chrome DevTools protocol."""
        return self.driver.execute_cdp_cmd(command, parameters)

    @property
    def status(self):
        return self.find('#status').text

    @property
    def sizes(self):
        """The sizes that the page offers, in order, such as "160 × 120"."""
        return [element.text for element in self.find_all('.size .name') if element.is_displayed()]

    @property
    def default(self):
        return [entry.text.splitlines()[0] for entry in self.find_all('.size:has(.badge)')]

    @property
    def chosen(self):
        """The form's value, and the text that the page shows for it."""
        value = self.run('return new FormData(document.querySelector("form")).get("resolution")')
        return value, self.find('output').text

    @property
    def note(self):
        """The title of the error message, or None."""
        note = self.find('#note')
        return note.find_element(By.TAG_NAME, 'h2').text if note.is_displayed() else None

    def resize(self, width, height=800):
        self.tell('Emulation.setDeviceMetricsOverride', width=width, height=height,
                  deviceScaleFactor=1, mobile=width < 600)

    def use_colours(self, scheme):
        self.tell('Emulation.setEmulatedMedia',
                  features=[{'name': 'prefers-color-scheme', 'value': scheme}])


@contextlib.contextmanager
def browser():
    options = webdriver.ChromeOptions()
    options.binary_location = '/usr/bin/chromium'
    options.set_capability('goog:loggingPrefs', {'performance': 'ALL'})
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as folder:
        for option in (*OPTIONS, f'--user-data-dir={folder}'):
            options.add_argument(option)
        driver = webdriver.Chrome(options=options, service=Service('/usr/bin/chromedriver'))
        try:
            yield Page(driver)
        finally:
            driver.quit()
