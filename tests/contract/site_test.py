#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Tests the built site as readers use it, opened from its folder: site_test.py HTML"""
import re
import sys
import unittest
from contextlib import contextmanager
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import quote, unquote, urlsplit

try:
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.by import By
    from selenium.webdriver.support.ui import WebDriverWait
except ImportError:
    webdriver = None

DRIVER = Path("/usr/bin/chromedriver")
SITE = Path(sys.argv.pop(1)).resolve()
ROOT = Path(__file__).resolve().parents[2]
PAGES = sorted(SITE.rglob("*.html"))
SOUGHT = {"time out": "how-to/find-out-why-a-call-failed.html", "record a television": "how-to/replay-a-television.html",
          "test without hardware": "index.html", "which architectures": "reference/compatibility.html",
          "service in Python": "how-to/write-a-service-in-python.html", "MuteAudio": "reference/api/IPlayerControl.h.html",
          "RunningScenario": "reference/api/testing/Television.h.html",
          "zviptv-sim": "reference/man/zviptv-sim.1.html"}


class Page(HTMLParser):
    """The identifiers and links of a page, and the files that a browser loads with it."""

    def __init__(self, file):
        super().__init__()
        self.names, self.links, self.loaded = {""}, [], []
        self.feed(file.read_text())

    def handle_starttag(self, tag, attrs):
        found = dict(attrs)
        self.names.add(found.get("id", ""))
        if tag == "a" and "href" in found:
            self.links.append(found["href"])
        elif tag in ("img", "script", "link", "object", "iframe"):
            self.loaded += [found[name] for name in ("src", "href", "data") if found.get(name)]


class Files(unittest.TestCase):
    pages = {file: Page(file) for file in PAGES}

    def test_every_link_leads_to_a_page_and_a_section(self):
        for file, page in self.pages.items():
            for link in (*page.links, *page.loaded):
                url = urlsplit(link)
                if url.scheme or link == "#":
                    continue
                target = (file.parent / unquote(url.path)).resolve() if url.path else file
                self.assertTrue(target.is_file(), f"{file.relative_to(SITE)} links to {link}")
                if target in self.pages and url.fragment:
                    self.assertIn(unquote(url.fragment), self.pages[target].names, f"in {file.relative_to(SITE)}: {link}")

    def test_every_header_has_its_declarations(self):
        headers = {str(file.relative_to(ROOT / "include/zviptv")) for file in ROOT.glob("include/zviptv/**/*.h")}
        headers |= {"Protocol.h", "client/Player.h", "client/Types.h", "testing/Functions.h", "testing/Verbs.h"}
        self.assertGreater(len(headers), 35)
        for header in sorted(headers - {"client/Client.h"}):  # which only includes the others
            page = (SITE / f"reference/api/{header}.html").read_text()
            self.assertTrue("sig-object" in page, f"the page of {header} declares nothing")

    def test_nothing_is_loaded_from_elsewhere(self):
        for file, page in self.pages.items():
            self.assertEqual([link for link in page.loaded if urlsplit(link).scheme or link.startswith("/")], [], file)
        for style in SITE.rglob("*.css"):
            self.assertEqual(re.findall(r"(?:@import|url\()[ '\"]*(?:https?:|/)[^;)]*", style.read_text()), [], style)

    def test_no_file_contains_a_folder_of_the_machine(self):
        for file in filter(Path.is_file, SITE.rglob("*")):
            self.assertNotIn(str(ROOT).encode() + b"/", file.read_bytes(), file)


@contextmanager
def browser(width, dark):
    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    for option in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage"):
        options.add_argument(option)
    driver = webdriver.Chrome(service=Service(str(DRIVER)), options=options)
    try:
        driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                               {"width": width, "height": 900, "deviceScaleFactor": 1, "mobile": width < 600})
        driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [
            {"name": "prefers-color-scheme", "value": "dark" if dark else "light"}]})
        yield driver
    finally:
        driver.quit()


@unittest.skipUnless(webdriver and DRIVER.exists(), "chromium-driver and python3-selenium are not installed")
class Browser(unittest.TestCase):
    def check_pages(self, driver, pages, width, dark):
        for file in pages:
            driver.get(file.as_uri())
            name = str(file.relative_to(SITE))
            self.assertEqual([entry["message"] for entry in driver.get_log("browser")], [], name)
            self.assertLessEqual(driver.execute_script("return document.documentElement.scrollWidth"), width, name)
            colour = driver.execute_script("return getComputedStyle(document.body).backgroundColor")
            self.assertEqual(int(re.findall(r"\d+", colour)[0]) < 128, dark, f"{name}: {colour}")

    def test_every_page_fits_a_telephone(self):
        with browser(390, False) as driver:
            self.check_pages(driver, PAGES, 390, False)

    def test_every_page_fits_a_dark_desktop(self):
        with browser(1280, True) as driver:
            self.check_pages(driver, PAGES, 1280, True)

    def test_pages_follow_the_colours_of_the_reader(self):
        some = [SITE / "index.html", SITE / "reference/protocol.html"]
        for width, dark in ((390, True), (1280, False)):
            with browser(width, dark) as driver:
                self.check_pages(driver, some, width, dark)

    def test_search_finds_the_page(self):
        with browser(1280, False) as driver:
            for words, page in SOUGHT.items():
                driver.get(f"{(SITE / 'search.html').as_uri()}?q={quote(words)}")
                WebDriverWait(driver, 30).until(lambda d: "finished" in d.find_element(By.CLASS_NAME, "search-summary").text)
                links = [a.get_attribute("href") for a in driver.find_elements(By.CSS_SELECTOR, "ul.search li a")]
                found = [Path(urlsplit(link).path) for link in links]
                self.assertIn(SITE / page, found[:6], words)
                self.assertEqual(driver.get_log("browser"), [], words)


if __name__ == "__main__":
    unittest.main(verbosity=2)
