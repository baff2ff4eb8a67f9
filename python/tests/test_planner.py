"""Planning toolpaths: what the program makes of them, row by row."""

import csv
import subprocess

import numpy as np
import pytest

import trunnion
from conftest import BUILD, SAMPLES
from trunnion import InputError, Toolpath

DOME = SAMPLES / "toolpaths" / "dome-over-the-top.cl"


def program_rows(folder, machine, path, *options):
    """What the program writes, in radians, as a list of dictionaries."""
    table = folder / "joints.csv"
    subprocess.run(
        [BUILD / "host" / "trunnion", "solve", machine, path, "-o", table, "--radians", *options],
        check=False,
        capture_output=True,
    )
    with open(table, newline="") as file:
        return list(csv.DictReader(file))


def column(rows, name):
    return np.array([float(row[name] or "nan") for row in rows])


def assert_same(motion, rows):
    assert len(motion) == len(rows)
    units = [name for name in rows[0] if name.endswith(("_mm", "_rad"))]
    assert [name.rsplit("_", 1)[0] for name in units] == list(motion.axes)
    for index, name in enumerate(units):
        assert np.array_equal(motion.joints[:, index], column(rows, name), equal_nan=True)
    assert np.array_equal(motion.point + 1, column(rows, "n"))
    assert np.array_equal(motion.line, column(rows, "line"))
    assert np.array_equal(motion.position_error, column(rows, "pos_err"), equal_nan=True)
    direction = np.degrees(motion.direction_error)
    assert direction == pytest.approx(column(rows, "dir_err_deg"), rel=1e-12, nan_ok=True)
    assert np.array_equal(motion.branch, np.nan_to_num(column(rows, "branch")))
    for index, row in enumerate(rows):
        told = {name for name, values in motion.flags.items() if values[index]}
        assert told == set(filter(None, row["flags"].split("|")))


def test_rows_are_those_of_the_program(trunnion_table, tmp_path):
    motion = trunnion_table.solve(DOME)
    assert_same(motion, program_rows(tmp_path, trunnion_table.file, DOME))
    assert motion.converged and len(motion) == 3203 and motion.flags["inserted"].sum() == 1819
    assert {event.kind for event in motion.events} == {"pole"}
    assert "3203 rows, 1819 of them inserted, 0 failed" in repr(motion)


def test_rows_of_an_arm_are_those_of_the_program(arm, tmp_path):
    path = SAMPLES / "toolpaths" / "bowl-trimming.cl"
    options = ["--tool-link", "spindle_nose", "--part-link", "part", "--points-only"]
    motion = arm.solve(path, points_only=True)
    assert_same(motion, program_rows(tmp_path, arm.file, path, *options))


def test_options_are_those_of_the_program(trunnion_table, tmp_path):
    motion = trunnion_table.solve(
        DOME,
        tool_length=80,
        linear_tol=0.05,
        angle_tol=0.002,
        pole_cone=0.05,
        start="free",
        prefer="A-",
        weight_travel=2,
        weight_limits=0.5,
        weight_pole=3,
        weight_preference=20,
        rewind="retract",
        branch_change="retract",
        retract=30,
        tolerance=1e-10,
        max_iterations=50,
    )
    degrees = np.degrees([0.002, 0.05])
    options = (
        f"--tool-length 80 --linear-tol 0.05 --angle-tol {degrees[0]!r} --pole-cone {degrees[1]!r} "
        "--start free --prefer A- --weight-travel 2 --weight-limits 0.5 --weight-pole 3 "
        "--weight-preference 20 --rewind retract --branch-change retract --retract 30 "
        "--tolerance 1e-10 --max-iterations 50"
    )
    assert_same(motion, program_rows(tmp_path, trunnion_table.file, DOME, *options.split()))


def test_locks_hold_an_axis(trunnion_table, tmp_path):
    motion = trunnion_table.solve(DOME, locks={"C": 0.5}, points_only=True)
    reached = ~np.isnan(motion.joints[:, 4])
    assert (motion.joints[reached, 4] == 0.5).all() and not motion.converged
    rows = program_rows(tmp_path, trunnion_table.file, DOME, "--lock", "C=0.5", "--points-only")
    assert_same(motion, rows)
    failed = [event for event in motion.events if event.kind == "failed"]
    assert len(failed) == motion.flags["failed"].sum() > 0 and failed[0].sentence
    # The lock is of that call.
    assert trunnion_table.solve(DOME, points_only=True).converged


def test_degrees_are_degrees(trunnion_table):
    radians = trunnion_table.solve(DOME, locks={"A": -0.5}, points_only=True)
    degrees = trunnion_table.solve(
        DOME, locks={"A": float(np.degrees(-0.5))}, points_only=True, degrees=True
    )
    assert degrees.degrees and not radians.degrees
    assert degrees.joints[:, :3] == pytest.approx(radians.joints[:, :3], nan_ok=True, abs=1e-6)
    assert degrees.joints[:, 3:] == pytest.approx(
        np.degrees(radians.joints[:, 3:]), nan_ok=True, abs=1e-6
    )


def test_the_rows_stand_where_they_should(trunnion_table):
    motion = trunnion_table.solve(DOME)
    path = Toolpath.read(DOME)
    for number, operation in enumerate(path.operations):
        mine = path.operation[motion.point] == number
        poses = trunnion_table.stream().forward(
            motion.joints[mine], tool_length=operation.tool_length
        )
        assert np.abs(poses[:, :3] - motion.asked[mine, :3]).max() < 1e-4
    points = ~motion.flags["inserted"] & ~motion.flags["rewind"]
    assert np.array_equal(motion.asked[points], path.points)
    assert np.array_equal(motion.line[points], path.lines)


def test_toolpaths_may_be_arrays(trunnion_table):
    angle = np.linspace(0, 6, 50)
    points = np.stack(
        [40 * np.cos(angle), 40 * np.sin(angle), 0 * angle, 0 * angle, 0.3 + 0 * angle, 1 + 0 * angle],
        axis=1,
    )
    motion = trunnion_table.solve(points, points_only=True, tool_length=60)
    assert motion.converged and motion.point.tolist() == list(range(50))
    poses = trunnion_table.stream().forward(motion.joints, tool_length=60)
    assert poses[:, :3] == pytest.approx(points[:, :3], abs=1e-4)
    rapid = np.zeros(50, bool)
    rapid[[0, 25]] = True
    path = Toolpath(points, rapid, name="ring")
    motion = trunnion_table.solve(path, points_only=True, tool_length=60)
    assert np.array_equal(motion.flags["rapid"], rapid) and len(path) == 50


def test_operations_go_to_their_streams(tmp_path):
    machine = trunnion.load(SAMPLES / "machines" / "mill-turn-bc.toml")
    path = SAMPLES / "toolpaths" / "cylinder-engraving.cl"
    names = [operation.name for operation in Toolpath.read(path).operations]
    usual = machine.solve(path, points_only=True)
    own = machine.solve(
        path, points_only=True, operation_streams={name: machine.stream().id for name in names}
    )
    assert np.array_equal(usual.joints, own.joints, equal_nan=True)
    with pytest.raises(InputError, match="there is no stream 99"):
        machine.solve(path, stream=99)
    with pytest.raises(InputError, match='there is no operation "nothing"'):
        machine.solve(path, operation_streams={"nothing": 1})


@pytest.mark.parametrize(
    ("options", "sentence"),
    [
        ({"prefer": "Q+"}, "--prefer: there is no axis"),
        ({"start": "away"}, "--start"),
        ({"linear_tol": 0}, "--linear-tol: 0 is not greater than 0"),
        ({"pole_cone": 1.0}, "--pole-cone"),
        ({"locks": {"A": 100}}, "--lock"),
        ({"locks": {"A": float("nan")}}, "--lock"),
        ({"tool_length": -1}, "--tool-length"),
        ({"max_iterations": 0}, "--max-iterations"),
        ({"weight_pole": -1}, "--weight-pole"),
        ({"tool_roll": "about"}, "--tool-roll"),
    ],
)
def test_says_what_the_program_says(trunnion_table, options, sentence):
    with pytest.raises(InputError) as raised:
        trunnion_table.solve(DOME, **options)
    assert str(raised.value).startswith(sentence)


def test_warnings_are_warned_of(trunnion_table):
    with pytest.warns(UserWarning, match="a direction as met within 0.001 deg"):
        motion = trunnion_table.solve(DOME, points_only=True, tolerance=1e-15)
    assert len(motion.warnings) == 1
