"""Machines from files, and the sentences for those that are wrong."""

import math
import subprocess

import pytest

import trunnion
from conftest import BUILD, SAMPLES
from trunnion import Axis, InputError, Mount

MACHINE = """
[machine]
name   = "Inch mill"
length = "inch"
angle  = "deg"

[[axis]]
name      = "Z"
parent    = "base"
type      = "linear"
direction = [0, 0, 1]
limits    = [-16, 0]

[[axis]]
name      = "B"
parent    = "Z"
type      = "rotary"
direction = [0, 1, 0]
point     = [0, 0, 6]
limits    = [-90, 90]
initial   = 45

[[mount]]
name   = "spindle"
kind   = "tool"
parent = "B"
origin = [0, 0, 0]
z_axis = [0, 0, 1]
x_axis = [1, 0, 0]

[[mount]]
name   = "table"
kind   = "part"
parent = "base"
origin = [0, 0, -16]
z_axis = [0, 0, 1]
x_axis = [1, 0, 0]

[[stream]]
id   = 3
tool = "spindle"
part = "table"
"""


@pytest.fixture
def file(tmp_path):
    path = tmp_path / "inch.toml"
    path.write_text(MACHINE)
    return path


def test_tells_what_the_file_says(file):
    machine = trunnion.load(file)
    assert (machine.name, machine.length_unit, machine.file) == ("Inch mill", "inch", str(file))
    assert machine.axes[0] == Axis(
        name="Z",
        type="linear",
        parent="base",
        unit="inch",
        limits=(-16, 0),
        direction=(0, 0, 1),
        point=(0, 0, 0),
        initial=0,
        word="Z",
        word_sign=1,
    )
    b = machine.axes[1]
    assert (b.type, b.unit, b.parent, b.point) == ("rotary", "rad", "Z", (0, 0, 6))
    assert b.limits == pytest.approx((-math.pi / 2, math.pi / 2))
    assert b.initial == pytest.approx(math.pi / 4)
    assert machine.mounts[1] == Mount(
        name="table",
        kind="part",
        parent="base",
        origin=(0, 0, -16),
        z_axis=(0, 0, 1),
        x_axis=(1, 0, 0),
    )
    assert "Inch mill" in repr(machine)


def test_finds_its_streams(file):
    machine = trunnion.load(file)
    stream = machine.stream()
    assert (stream.id, stream.tool, stream.part) == (3, "spindle", "table")
    assert [axis.name for axis in stream.axes] == ["Z", "B"]
    assert machine.stream(3).id == 3 and len(machine.streams) == 1
    with pytest.raises(InputError, match="there is no stream 4 in this machine; choose from: 3"):
        machine.stream(4)


def test_an_unlimited_axis_has_infinite_limits(trunnion_table):
    assert trunnion_table.axes[4].limits == (-math.inf, math.inf)


def test_a_urdf_takes_the_links_of_its_mounts(arm):
    assert arm.length_unit == "mm" and len(arm.stream().axes) == 8
    urdf = SAMPLES / "machines" / "arm-positioner.urdf"
    with pytest.raises(InputError, match="--tool-link"):
        trunnion.load(urdf)
    with pytest.raises(InputError, match="nowhere"):
        trunnion.load(urdf, tool_link="nowhere", part_link="part")
    with pytest.raises(InputError, match="leave them out"):
        trunnion.load(SAMPLES / "machines" / "trunnion-ac.toml", tool_link="a", part_link="b")


@pytest.mark.parametrize(
    ("old", "new"),
    [
        ('parent    = "Z"', 'parent    = "Q"'),
        ('type      = "rotary"', 'type      = "round"'),
        ('kind   = "part"', 'kind   = "tool"'),
        ("limits    = [-90, 90]", "limits    = [90, -90]"),
        ("[machine]", "[machine"),
        ('name      = "B"', 'name      = "Z"'),
    ],
)
def test_says_what_the_program_says(file, old, new):
    assert old in MACHINE
    file.write_text(MACHINE.replace(old, new))
    program = subprocess.run(
        [BUILD / "host" / "trunnion", "check", file], capture_output=True, text=True, check=False
    )
    assert program.returncode != 0
    with pytest.raises(InputError) as raised:
        trunnion.load(file)
    error = raised.value
    assert isinstance(error, ValueError)
    assert program.stderr.strip() == str(error)
    assert str(error) == f"{error.file}:{error.line}:{error.column}: {error.sentence}"
    assert error.file == str(file) and error.line > 0


def test_a_file_that_is_not_there_is_named(tmp_path):
    with pytest.raises(InputError, match="cannot be opened") as raised:
        trunnion.load(tmp_path / "none.toml")
    assert raised.value.line == 0


def test_names_of_files_may_be_of_any_letters(tmp_path):
    file = tmp_path / "Fräse – 铣床.toml"
    file.write_text(MACHINE)
    assert trunnion.load(str(file)).file == str(file)
