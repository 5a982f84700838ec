#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Tests which problems the soak finds in invented figures."""

import unittest

import soak


def samples(minutes, ends=None, **rates):
    """One sample per second. Nothing happens after the second `ends`. Rates are per second."""
    made = []
    for second in range(int(minutes * 60) + 1):
        busy = second if ends is None else min(second, ends)
        figures = {name: int(busy * rates.get(name, 0)) for name in soak.FIGURES}
        made.append({"seconds": second, "rss_mean_kib": 9000, "rss_max_kib": 9100, "fds_mean": 8, "fds_max": 8,
                     "service_rss_kib": 12000, **figures})
    return made


def wrong(made, restarts=10, clients=8):
    total = {name: made[-1][name] for name in soak.FIGURES}
    return soak.judge(made, [0] * clients, {"SIGKILL": restarts, "SIGTERM": 0}, total, False)[1]


class Judge(unittest.TestCase):
    def test_healthy(self):
        self.assertEqual(wrong(samples(20, calls=2000, packets=100, refused=0.05)), [])
        self.assertEqual(wrong(samples(0.3, calls=700, packets=50), clients=3), [])

    def test_nothing_works_after_second_20(self):
        found = wrong(samples(20, ends=20, calls=2000, packets=100))
        self.assertEqual(len(found), 18, found)
        self.assertIn("no call was answered between second 120 and 240", found)
        self.assertIn("no packet came between second 1080 and 1200", found)

    def test_calls_continue_but_fail(self):
        made = samples(20, ends=20, calls=2000, packets=100)
        for entry in made[20:]:
            entry["packets"] = entry["seconds"] * 100
            entry["calls"] = entry["seconds"] * 2000
            entry["refused"] = entry["calls"] - 40000
        found = wrong(made)
        self.assertIn("no call was answered between second 1080 and 1200", found)
        self.assertTrue(any("calls failed over 10 restarts" in line for line in found), found)

    def test_more_failures_than_restarts_explain(self):
        self.assertEqual(wrong(samples(20, calls=2000, packets=100, absent=1)),
                         ["1200 calls failed over 10 restarts of the service"])


if __name__ == "__main__":
    unittest.main()
