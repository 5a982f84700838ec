#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Tests the statistics of blocks."""

import unittest

import blocks


class Certainty(unittest.TestCase):
    def of(self, number):
        return blocks.certainty([[rank] for rank in range(number)])

    def test_certainty_omits_the_ranks_that_95_percent_allow(self):
        for number, found in {6: [0, 5], 8: [0, 7], 9: [1, 7], 14: [2, 11], 20: [5, 14]}.items():
            self.assertEqual(self.of(number), found, number)

    def test_certainty_is_unknown_for_fewer_than_six_generations(self):
        for number in range(1, 6):
            self.assertIsNone(self.of(number), number)

    def test_certainty_counts_generations_not_blocks(self):
        self.assertIsNone(blocks.certainty([list(range(100)), list(range(100))]))


class Ratios(unittest.TestCase):
    def test_ratios_compare_blocks_of_the_same_round(self):
        found = blocks.ratios([[2, 4], [9, 8]], [[1, 1], [3, 2]])
        self.assertEqual((found["median"], found["low"], found["high"]), (3.5, 3, 4))

    def test_ratio_to_zero_is_an_error(self):
        with self.assertRaises(RuntimeError):
            blocks.ratios([[1]], [[0]])


if __name__ == "__main__":
    unittest.main()
