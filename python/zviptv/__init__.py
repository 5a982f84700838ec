# SPDX-License-Identifier: MIT
"""The IPTV service of a Linux television, in Python. zviptv.testing has what tests of applications need."""
