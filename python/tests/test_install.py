"""What is installed works by itself, wherever the prefix is."""

import os
import subprocess
import sys

from conftest import BUILD, SAMPLES

SCRIPT = """
import sys
import trunnion
solved = trunnion.load(sys.argv[1]).stream().inverse([10, 20, 30, 0.1, 0.3, 0.8])
print(bool(solved.converged))
print(trunnion.__file__)
with open("/proc/self/maps") as maps:
    print(next(line.split()[-1] for line in maps if "libtrunnion" in line))
"""


def test_installed_package_finds_its_library(tmp_path):
    prefix = tmp_path / "prefix"
    for component in ("library", "python"):
        subprocess.run(
            ["cmake", "--install", BUILD, "--component", component, "--prefix", prefix],
            check=True,
            capture_output=True,
        )
    package = prefix / "lib" / "python3" / "dist-packages" / "trunnion"
    assert {"__init__.py", "_trunnion.pyi", "py.typed"} <= set(os.listdir(package))
    printed = subprocess.run(
        [sys.executable, "-c", SCRIPT, SAMPLES / "machines" / "trunnion-ac.toml"],
        env={"PYTHONPATH": str(package.parent)},
        cwd=tmp_path,
        capture_output=True,
        text=True,
        check=True,
    ).stdout.splitlines()
    assert printed[0] == "True" and printed[1] == str(package / "__init__.py")
    assert printed[2].startswith(str(prefix))
