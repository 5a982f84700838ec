#!/usr/bin/env python3
"""That the page's figures are those of the results beside it, and none is typed."""

import json
import unittest

import report


class Page(unittest.TestCase):
    def test_has_the_tables_of_the_committed_results(self):
        results = json.loads((report.PAGE.with_suffix("") / "results.json").read_text())
        made = report.blocks(results)
        for name, text in report.filled(report.PAGE).items():
            self.assertEqual(text, made.pop(name), name)
        self.assertEqual(made, {}, "a table without a place in the page")

    def test_is_of_a_whole_run_on_what_was_committed(self):
        results = json.loads((report.PAGE.with_suffix("") / "results.json").read_text())
        self.assertFalse(results["quick"])
        self.assertRegex(results["machine"]["revision"], "^[0-9a-f]{7,40}$")


if __name__ == "__main__":
    unittest.main()
