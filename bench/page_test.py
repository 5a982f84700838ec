#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Checks that the figures of the page are those of its summary: none is typed by hand."""

import unittest

import report
import summary


class Page(unittest.TestCase):
    def test_contains_the_tables_of_the_committed_summary(self):
        results = report.committed()
        made = report.blocks(results)
        for name, text in report.filled(report.PAGE).items():
            self.assertEqual(text, made.pop(name), name)
        self.assertEqual(made, {}, "a table without a block in the page")

    def test_comes_from_a_complete_run_of_a_committed_revision(self):
        results = report.committed()
        self.assertFalse(results["quick"])
        self.assertEqual(results, summary.of(results))
        for part in (results["machine"], results["python"]):
            self.assertRegex(part["revision"], "^[0-9a-f]{7,40}$")


if __name__ == "__main__":
    unittest.main()
