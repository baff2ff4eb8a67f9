"""Counts the instructions of a warm solve on each bundled machine, by callgrind.

usage: count_instructions.py WARM_SOLVE MACHINES --build KIND (--expect FILE | --write FILE)

--expect fails where a solve takes over 5 % more than the file says, --write renews the file. Counts
are compared only where they can be: in release builds by g++, with the compiler and the C library of
the file; anywhere else the exit code is 77.
"""

import argparse
import concurrent.futures
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

SKIPPED = 77
MOST_GROWTH = 0.05
LINKS = {"arm-positioner.urdf": ["spindle_nose", "part"]}


def count(program, machine):
    with tempfile.TemporaryDirectory() as folder:
        run = subprocess.run(
            ["valgrind", "--tool=callgrind", "--toggle-collect=MeasuredSolve*",
             f"--callgrind-out-file={folder}/out", program, machine, *LINKS.get(machine.name, [])],
            capture_output=True, text=True)
    collected = re.search(r"Collected : (\d+)", run.stderr)
    if run.returncode != 0 or collected is None:
        sys.exit(f"{machine.name} cannot be counted:\n{run.stderr}")
    return int(collected.group(1))


def count_all(program, folder):
    machines = sorted(path for path in pathlib.Path(folder).iterdir())
    with concurrent.futures.ThreadPoolExecutor(min(2, os.cpu_count() or 1)) as pool:
        counts = pool.map(lambda machine: count(program, machine), machines)
        return dict(zip((machine.name for machine in machines), counts))


def write(file, platform, counts):
    lines = [platform] + [f"{name:<24}{value:>12}" for name, value in counts.items()]
    pathlib.Path(file).write_text("\n".join(lines) + "\n", encoding="utf-8")


def skip(reason):
    print(f"Not compared: {reason}.")
    sys.exit(SKIPPED)


def compare(file, platform, program, folder):
    stored_platform, *lines = pathlib.Path(file).read_text(encoding="utf-8").splitlines()
    if stored_platform != platform:
        skip(f"the stored counts are those of {stored_platform}; here it is {platform}")
    stored = {name: int(value) for name, value in (line.split() for line in lines)}
    counts = count_all(program, folder)
    failures = [f"{name} has no stored count, or no file" for name in counts.keys() ^ stored.keys()]
    for name in sorted(counts.keys() & stored.keys()):
        growth = counts[name] / stored[name] - 1
        print(f"{name:<24}{counts[name]:>12}  {growth:+.1%}")
        if growth > MOST_GROWTH:
            failures.append(f"{name}: a solve takes {growth:.1%} more instructions than stored")
    if failures:
        sys.exit("\n".join(sorted(failures)) + "\nWhere that is meant, scripts/count-instructions "
                 "renews the stored counts.")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program")
    parser.add_argument("machines")
    parser.add_argument("--build", required=True)
    parser.add_argument("--expect")
    parser.add_argument("--write")
    arguments = parser.parse_args()
    if arguments.build != "GNU Release":
        skip(f"the stored counts are of a release build by g++, and this one is {arguments.build}")
    if shutil.which("valgrind") is None:
        skip("valgrind is not installed; scripts/setup tests installs it")
    platform = subprocess.run([arguments.program, "--platform"], check=True, capture_output=True,
                              text=True).stdout.strip()
    if arguments.write:
        write(arguments.write, platform, count_all(arguments.program, arguments.machines))
    if arguments.expect:
        compare(arguments.expect, platform, arguments.program, arguments.machines)


if __name__ == "__main__":
    main()
