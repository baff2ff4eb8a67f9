"""The examples print what their twins in C++ print."""

import os
import subprocess
import sys

import pytest

import trunnion
from conftest import ROOT


@pytest.mark.parametrize("name", ["01_forward", "02_inverse", "03_branches", "04_locks"])
def test_prints_what_its_twin_prints(name):
    package = os.path.dirname(os.path.dirname(trunnion.__file__))
    printed = subprocess.run(
        [sys.executable, ROOT / "python" / "examples" / f"{name}.py"],
        env={**os.environ, "PYTHONPATH": package},
        capture_output=True,
        text=True,
        check=True,
    ).stdout
    assert printed == (ROOT / "examples" / "expected" / f"{name}.txt").read_text()
