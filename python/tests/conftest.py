"""What the tests share: the checkout, its build, and machines to ask."""

import os
import sys
from pathlib import Path

import pytest

import trunnion

ROOT = Path(__file__).resolve().parents[2]
BUILD = Path(os.environ.get("TRUNNION_BUILD", ROOT / "build" / "release")).resolve()
SAMPLES = ROOT / "samples"

sys.path.insert(0, str(ROOT / "python" / "examples"))

from example_mill import ExampleMill  # noqa: E402


@pytest.fixture
def mill():
    """The mill of the examples, built by the low-level classes."""
    return ExampleMill()


@pytest.fixture
def trunnion_table():
    """A table-table mill: A tilts about the line y = 0, z = -460, the table is 80 above it."""
    return trunnion.load(SAMPLES / "machines" / "trunnion-ac.toml")


@pytest.fixture
def arm():
    """A six-axis arm and a positioner of two axes."""
    return trunnion.load(
        SAMPLES / "machines" / "arm-positioner.urdf", tool_link="spindle_nose", part_link="part"
    )
