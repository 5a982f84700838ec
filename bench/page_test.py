#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The page's figures are those of the summary beside it; none is typed by hand."""

import json
import unittest

import report
import summary


class Page(unittest.TestCase):
    def test_has_the_tables_of_the_committed_summary(self):
        results = json.loads((report.PAGE.with_suffix("") / "summary.json").read_text())
        made = report.blocks(results)
        for name, text in report.filled(report.PAGE).items():
            self.assertEqual(text, made.pop(name), name)
        self.assertEqual(made, {}, "a table without a place in the page")

    def test_is_of_a_whole_run_on_what_was_committed(self):
        results = json.loads((report.PAGE.with_suffix("") / "summary.json").read_text())
        self.assertFalse(results["quick"])
        self.assertEqual(results, summary.of(results))
        self.assertRegex(results["machine"]["revision"], "^[0-9a-f]{7,40}$")


if __name__ == "__main__":
    unittest.main()
