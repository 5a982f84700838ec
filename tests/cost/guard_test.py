# SPDX-License-Identifier: MIT
"""That the guard fails when it should, and reads profiles right."""

import contextlib
import io
import os
import tempfile
import unittest
from unittest import mock

import guard

BASELINE = {"instructions": 1000.0, "own instructions": 100.0, "allocations": 20.0, "allocated bytes": 4000.0}

# main, of the program, calls g_free, of GLib, twice: 5 lines of its own, 40 of g_free and what that calls.
PROFILE = """events: Ir
ob=(1) /program
fl=(1) main.cpp
fn=(0) main
30 2
cob=(2) /lib/libglib
cfn=(3) g_free
calls=2 0
-1 40
+1 3

ob=(2)
fn=(3)
0 30
* 10
totals: 45
"""


class Compare(unittest.TestCase):
    def test_equal_counts_pass(self):
        self.assertEqual(guard.compare(BASELINE, BASELINE), ([], []))

    def test_each_measure_may_grow_by_the_limit_and_no_more(self):
        for name in guard.MEASURES:
            over, _ = guard.compare({**BASELINE, name: BASELINE[name] * 1.05}, BASELINE)
            self.assertEqual(over, [], name)
            over, _ = guard.compare({**BASELINE, name: BASELINE[name] * 1.051}, BASELINE)
            self.assertEqual(len(over), 1, name)
            self.assertIn(name, over[0])

    def test_a_workload_without_allocations_must_stay_so(self):
        over, _ = guard.compare({**BASELINE, "allocations": 1.0}, {**BASELINE, "allocations": 0.0})
        self.assertEqual(len(over), 1)

    def test_reports_what_became_cheaper(self):
        over, under = guard.compare({**BASELINE, "allocations": 18.0}, BASELINE)
        self.assertEqual(over, [])
        self.assertIn("-10.0%", under[0])


class MeasureOnce(unittest.TestCase):
    def measured(self, program, figures, versions):
        with (mock.patch.object(guard, "measure", return_value=figures),
              mock.patch.object(guard, "versions", return_value=versions)):
            return guard.measure_once(program, "one")

    def test_measures_another_program_and_other_versions_again(self):
        with tempfile.TemporaryDirectory() as folder:
            program = os.path.join(folder, "program")
            for code, versions, figures, expected in (
                    ("a", ["1"], {"allocations": 1.0}, 1.0), ("a", ["1"], {"allocations": 2.0}, 1.0),
                    ("a", ["2"], {"allocations": 3.0}, 3.0), ("b", ["2"], {"allocations": 4.0}, 4.0)):
                with open(program, "w", encoding="utf-8") as file:
                    file.write(code)
                self.assertEqual(self.measured(program, figures, versions), {"allocations": expected})


class Check(unittest.TestCase):
    def verdict(self, measured):
        with (mock.patch.object(guard, "measure_once", return_value=measured),
              mock.patch.object(guard, "versions", return_value=[]),
              contextlib.redirect_stdout(io.StringIO()) as said):
            return guard.check("program", "one", {"versions": [], "workloads": {"one": BASELINE}}), said.getvalue()

    def test_passes_within_the_limit_and_reports_the_figures(self):
        passed, said = self.verdict(BASELINE)
        self.assertTrue(passed)
        self.assertIn("instructions: 1000.0", said)

    def test_fails_over_the_limit_and_reports_how_to_update(self):
        passed, said = self.verdict({**BASELINE, "instructions": 1100.0})
        self.assertFalse(passed)
        self.assertIn("OVER THE LIMIT of +5%: instructions: 1100.0 a round", said)
        self.assertIn("guard.py --program program renew", said)


class Profile(unittest.TestCase):
    def test_calls_are_counted_once(self):
        self.assertEqual(guard.instructions(PROFILE.splitlines(True), "/program"), (45, 5))

    def test_a_profile_that_is_read_wrongly_is_an_error(self):
        with self.assertRaises(ValueError):
            guard.instructions(PROFILE.replace("totals: 45", "totals: 46").splitlines(True), "/program")


if __name__ == "__main__":
    unittest.main()
