#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Checks that the figures of the page are those of its summary: none is typed by hand."""

import json
import unittest

import report
import summary


class Page(unittest.TestCase):
    def test_contains_the_tables_of_the_committed_summary(self):
        results = json.loads((report.PAGE.with_suffix("") / "summary.json").read_text())
        made = report.blocks(results)
        for name, text in report.filled(report.PAGE).items():
            self.assertEqual(text, made.pop(name), name)
        self.assertEqual(made, {}, "a table without a block in the page")

    def test_comes_from_a_complete_run_of_a_committed_revision(self):
        results = json.loads((report.PAGE.with_suffix("") / "summary.json").read_text())
        self.assertFalse(results["quick"])
        self.assertEqual(results, summary.of(results))
        self.assertRegex(results["machine"]["revision"], "^[0-9a-f]{7,40}$")


if __name__ == "__main__":
    unittest.main()
