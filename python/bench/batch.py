"""What calls with arrays cost beside the same loops in C++, in turn in one process.

usage: batch.py LOOP [ROUNDS]

LOOP is the shared library with the loops. Prints the medians of the ratios within a round, by processor
time; fails where one is above 1.2.
"""

import ctypes
import statistics
import sys
import time
from pathlib import Path

import numpy as np

import trunnion

MACHINES = Path(__file__).resolve().parents[2] / "samples" / "machines"
MOST = 1.2
NUMBERS = np.ctypeslib.ndpointer(float, flags="C_CONTIGUOUS")


class Loops:
    """The loops in C++: each returns what it finds, and its seconds."""

    def __init__(self, library):
        self._library = ctypes.CDLL(str(library))
        for name in ("inverse", "forward"):
            function = getattr(self._library, f"trunnion_loop_{name}")
            function.restype = ctypes.c_double
            function.argtypes = [ctypes.c_char_p, ctypes.c_size_t, NUMBERS, NUMBERS]

    def run(self, name, machine, rows, width):
        found = np.empty((len(rows), width))
        function = getattr(self._library, f"trunnion_loop_{name}")
        seconds = function(str(machine).encode(), len(rows), np.ascontiguousarray(rows), found)
        if seconds < 0:
            raise SystemExit(f"{machine} is no machine")
        return found, seconds


def timed(call):
    start = time.thread_time()
    result = call()
    return result, time.thread_time() - start


def way(stream, count):
    """Joint values on a way in small steps through the middle of the axes' ranges."""
    low, high = np.array([axis.limits for axis in stream.axes]).T
    low, high = np.maximum(low, -3), np.minimum(high, 3)
    steps = 2e-4 * np.arange(count)[:, None] + np.arange(1, 1 + len(stream.axes))
    return (low + high) / 2 + 0.2 * (high - low) * np.sin(steps)


def ratios(loops, name, count, rounds):
    """Of one machine: of forward and of inverse kinematics, round by round."""
    file = MACHINES / name
    stream = trunnion.load(file).stream()
    joints = way(stream, count)
    axes = len(stream.axes)
    poses, _ = loops.run("forward", file, joints, 6)
    assert np.array_equal(stream.forward(joints), poses)
    values, _ = loops.run("inverse", file, poses, axes)
    solved = stream.inverse(poses)
    assert np.array_equal(solved.joints[solved.converged], values[solved.converged])
    assert solved.converged.mean() > 0.99
    forward, inverse = [], []
    for _ in range(rounds):
        _, loop = loops.run("forward", file, joints, 6)
        forward.append(timed(lambda: stream.forward(joints))[1] / loop)
        _, loop = loops.run("inverse", file, poses, axes)
        inverse.append(timed(lambda: stream.inverse(poses))[1] / loop)
    return forward, inverse


def main():
    loops = Loops(Path(sys.argv[1]).resolve())
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 31
    worst = 0.0
    print("| machine | forward, Python over C++ | inverse, Python over C++ |\n|---|---|---|")
    for machine in sorted(MACHINES.glob("*.toml")):
        forward, inverse = map(statistics.median, ratios(loops, machine.name, 2000, rounds))
        print(f"| {machine.stem} | {forward:.2f} | {inverse:.2f} |", flush=True)
        worst = max(worst, forward, inverse)
    return 0 if worst <= MOST else 1


if __name__ == "__main__":
    sys.exit(main())
