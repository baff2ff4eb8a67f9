"""Calls with arrays cost little more than the same loops in C++. `scripts/bench-python` has the figures."""

import statistics
import sys

from conftest import BUILD, ROOT

sys.path.insert(0, str(ROOT / "python" / "bench"))

import batch  # noqa: E402


def test_a_batch_costs_little_more_than_a_loop():
    loops = batch.Loops(BUILD / "python" / "libtrunnion_python_loop.so")
    forward, inverse = batch.ratios(loops, "trunnion-ac.toml", 1000, 9)
    # Both are below 1.2 where nothing else runs; this is to see a call that costs twice as much.
    assert statistics.median(forward) < 1.8 and statistics.median(inverse) < 1.6
