# SPDX-License-Identifier: MIT
"""Runs tests of the panel in one process, with one browser: panel_test.py SIM CTL SAMPLE GUIDE NAME...

NAME is that of a module, a class or a test, for example page_test.Fits."""
import sys
import unittest

SKIPPED = 77


def main():
    from support import PageTest
    names = sys.argv[5:]
    try:
        result = unittest.TextTestRunner(stream=sys.stdout, verbosity=2).run(unittest.defaultTestLoader.loadTestsFromNames(names))
    finally:
        if PageTest.driver is not None:
            PageTest.driver.quit()
    if not result.wasSuccessful() or result.testsRun == 0:
        return 1
    return SKIPPED if len(result.skipped) == result.testsRun else 0


if __name__ == "__main__":
    sys.exit(main())
