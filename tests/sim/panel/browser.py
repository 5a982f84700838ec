# SPDX-License-Identifier: MIT
"""The browser that looks at the panel, and the screen it shows pages on."""
import os
import unittest
from pathlib import Path

try:
    from selenium import webdriver
    from selenium.common.exceptions import TimeoutException
    from selenium.webdriver.chrome.service import Service
except ImportError:
    webdriver, TimeoutException = None, TimeoutError

DRIVER = Path("/usr/bin/chromedriver")
# Chromium without windows, menus and profiles: it needs two thirds of the processor time. The program itself, not the
# script that starts it: the driver ends what it has started.
SHELL = Path("/usr/lib/chromium/chromium-headless-shell")

# Times are held to the limits that the documentation promises only when nothing else runs: ./run check sets the variable.
ALONE = bool(os.environ.get("ZVIPTV_PANEL_ALONE"))
SCALE = 0.5 if ALONE else 0.25  # pixels of the screen for each pixel of the page


def start_browser():
    """A headless Chromium that draws without a GPU: emulating one takes more processor time than drawing."""
    if webdriver is None or not DRIVER.exists() or not SHELL.exists():
        raise unittest.SkipTest("install chromium-driver, chromium-headless-shell and python3-selenium")
    options = webdriver.ChromeOptions()
    options.binary_location = str(SHELL)
    for argument in ("--no-sandbox", "--disable-dev-shm-usage", "--disable-gpu", "--in-process-gpu",
                     "--num-raster-threads=1", "--disable-extensions", "--disable-background-networking",
                     "--disable-component-update", "--disable-sync", "--no-first-run",
                     "--disable-features=SpareRendererForSitePerProcess,BackForwardCache,Translate,MediaRouter",
                     "--autoplay-policy=no-user-gesture-required", "--window-size=1280,900"):
        options.add_argument(argument)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    driver = webdriver.Chrome(service=Service(str(DRIVER)), options=options)
    show_on(driver)
    return driver


def show_on(driver, width=1280, dark=False, scale=SCALE):
    """The screen that the browser's pages are shown on. With fewer pixels than the page has, the layout is the same and
    drawing takes less time."""
    driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                           {"width": width, "height": 900, "deviceScaleFactor": scale, "mobile": False})
    driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [
        {"name": "prefers-color-scheme", "value": "dark" if dark else "light"}]})
