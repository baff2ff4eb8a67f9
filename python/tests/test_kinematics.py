"""Forward and inverse kinematics of machines from files, of single poses and of arrays."""

import math
import subprocess

import numpy as np
import pytest

from conftest import BUILD
from trunnion import InputError

LEANING = [10, 20, 30, 0.1, 0.3, 0.8]


def joints_of(stream, count):
    """Joint values all over the middle of the axes' ranges, the same each time."""
    random = np.random.default_rng(3)
    low, high = np.array([axis.limits for axis in stream.axes]).T
    low, high = np.maximum(low, -3), np.minimum(high, 3)
    middle, half = (low + high) / 2, (high - low) / 2
    return middle + 0.4 * half * random.uniform(-1, 1, (count, len(stream.axes)))


def test_forward_is_where_the_tool_is(trunnion_table):
    # The tool at machine zero is 460 above the axis of A, the table 80: at A = 30 degrees the
    # tool is seen from the table at y = 460 sin 30, z = 460 cos 30 - 80, and leans by 30 degrees.
    stream = trunnion_table.stream()
    pose = stream.forward([10, 0, 0, math.pi / 6, 0])
    assert pose.shape == (6,)
    half, cos = 0.5, math.cos(math.pi / 6)
    assert pose.tolist() == pytest.approx([10, 460 * half, 460 * cos - 80, 0, half, cos])
    in_degrees = stream.forward([10, 0, 0, 30, 0], degrees=True)
    assert in_degrees.tolist() == pytest.approx(pose.tolist(), abs=1e-12)


def test_tool_length_moves_the_end_down_the_tool(trunnion_table):
    stream = trunnion_table.stream()
    with_tool = stream.forward([10, 0, 0, 0, 0], tool_length=100)
    assert with_tool.tolist() == pytest.approx([10, 0, 460 - 80 - 100, 0, 0, 1])
    assert stream.forward([10, 0, 0, 0, 0])[2] == pytest.approx(380)  # of that call only
    for wrong in (-1, math.nan, math.inf):
        with pytest.raises(InputError, match="tool_length"):
            stream.forward([10, 0, 0, 0, 0], tool_length=wrong)


def test_frames_hold_the_whole_pose(trunnion_table):
    stream = trunnion_table.stream()
    rows = joints_of(stream, 5)
    poses, frames = stream.forward(rows), stream.forward(rows, frames=True)
    assert frames.shape == (5, 4, 4) and stream.forward(rows[0], frames=True).shape == (4, 4)
    assert np.array_equal(frames[:, :3, 3], poses[:, :3])
    assert np.array_equal(frames[:, :3, 2], poses[:, 3:])
    assert np.array_equal(frames[:, 3], np.tile([0, 0, 0, 1], (5, 1)))
    turn = frames[:, :3, :3]
    assert np.allclose(turn @ np.swapaxes(turn, 1, 2), np.eye(3), atol=1e-15)


def test_arrays_are_the_single_poses(trunnion_table):
    stream = trunnion_table.stream()
    rows = joints_of(stream, 40)
    poses = stream.forward(rows)
    assert np.array_equal(poses, [stream.forward(row) for row in rows])
    starts = rows + 0.01
    batch = stream.inverse(poses, starts)
    for row in range(40):
        single = stream.inverse(poses[row], starts[row])
        assert single.converged and np.array_equal(single.joints, batch.joints[row])
        assert single.position_error == batch.position_error[row]


@pytest.mark.parametrize("kind", ["trunnion_table", "arm"])
def test_inverse_returns_to_reachable_poses(kind, request):
    stream = request.getfixturevalue(kind).stream()
    rows = joints_of(stream, 200)
    targets = stream.forward(rows, frames=kind == "arm")
    solved = stream.inverse(targets, rows + 0.01)
    assert solved.converged.all() and len(solved) == 200
    # As the README promises, 1e-4 length units and 0.001 degrees.
    assert solved.position_error.max() <= 1e-4
    assert solved.direction_error.max() <= math.radians(0.001)
    again = stream.forward(solved.joints, frames=kind == "arm")
    assert np.allclose(again, targets, atol=1e-4)


def test_errors_are_what_forward_kinematics_leaves(trunnion_table):
    stream = trunnion_table.stream()
    rows = joints_of(stream, 20)
    poses = stream.forward(rows)
    # Rough, so that there is something to see.
    solved = stream.inverse(poses, rows + 0.02, tolerance=1.0)
    reached = stream.forward(solved.joints)
    apart = np.linalg.norm(reached[:, :3] - poses[:, :3], axis=1)
    angle = np.arccos(np.clip((reached[:, 3:] * poses[:, 3:]).sum(axis=1), -1, 1))
    assert solved.position_error == pytest.approx(apart, abs=1e-12) and apart.max() > 1e-6
    assert solved.direction_error == pytest.approx(angle, abs=1e-7)
    starts = np.where(stream.inverse(poses[0]).rotary, np.degrees(rows + 0.02), rows + 0.02)
    in_degrees = stream.inverse(poses, starts, tolerance=1.0, degrees=True)
    assert in_degrees.direction_error == pytest.approx(np.degrees(solved.direction_error))
    assert in_degrees.joints[:, :3] == pytest.approx(solved.joints[:, :3])
    assert in_degrees.joints[:, 3:] == pytest.approx(np.degrees(solved.joints[:, 3:]))


def test_directions_may_have_any_length(trunnion_table):
    stream = trunnion_table.stream()
    long = [*LEANING[:3], *(np.array(LEANING[3:]) * 7)]
    assert stream.inverse(long).joints == pytest.approx(stream.inverse(LEANING).joints)


def test_what_is_not_reached_is_nan(trunnion_table):
    stream = trunnion_table.stream()
    solved = stream.inverse([LEANING, [1e4, 0, 0, 0, 0, 1], LEANING])
    assert solved.converged.tolist() == [True, False, True]
    assert np.isnan(solved.joints[1]).all() and np.isnan(solved.position_error[1])
    assert np.isnan(solved.direction_error[1]) and not np.isnan(solved.joints[[0, 2]]).any()
    assert "2 of 3 converged" in repr(solved)
    assert not stream.inverse([1e4, 0, 0, 0, 0, 1]).converged


def test_limits_are_kept_unless_said_otherwise(trunnion_table):
    stream = trunnion_table.stream()
    pose = stream.forward([400, 0, -100, -0.3, 0.2])  # X goes to 300
    start = [290, 0, -100, -0.3, 0.2]
    assert not stream.inverse(pose, start).converged
    assert stream.inverse(pose, start, limits=False).joints[0] == pytest.approx(400, abs=1e-4)


def test_locked_axes_stay_where_they_start(trunnion_table):
    stream = trunnion_table.stream()
    pose = stream.forward([10, 20, -100, -0.3, 0.7])
    solved = stream.inverse(pose, [0, 0, -50, -0.2, 0.7], locks=["C"])
    assert solved.converged and solved.joints[4] == 0.7
    # With C elsewhere the direction is out of reach.
    assert not stream.inverse(pose, [0, 0, -50, -0.2, 1.7], locks=["C"]).converged
    assert stream.inverse(pose, [0, 0, -50, -0.2, 1.7]).converged
    with pytest.raises(InputError, match='there is no axis "Q"; the stream has X, Y, Z, A, C'):
        stream.inverse(pose, locks=["Q"])


def test_each_solve_starts_where_it_is_told(trunnion_table):
    stream = trunnion_table.stream()
    # A pose on a way along which C turns by more than half a turn, step by step.
    rows = np.array([[0, 0, -100, -0.4, turn] for turn in np.arange(0, 4.1, 0.1)])
    poses = stream.forward(rows)
    previous = stream.inverse(poses, rows[0])
    assert previous.joints == pytest.approx(rows, abs=1e-3)
    given = stream.inverse(poses, rows[0], start_from="given")
    assert np.array_equal(given.joints[-1], stream.inverse(poses[-1], rows[0]).joints)
    assert not np.allclose(given.joints, rows, atol=1e-3)
    own = stream.inverse(poses, rows)
    assert own.joints == pytest.approx(rows, abs=1e-3)
    assert stream.inverse(poses[:1], rows[:1]).joints.shape == (1, 5)
    with pytest.raises(InputError, match="previous, given or search"):
        stream.inverse(poses, start_from="nowhere")


def test_search_finds_what_a_single_start_does_not(arm):
    stream = arm.stream()
    rows = joints_of(stream, 60)
    rows[:, 6:] = 0.2
    frames = stream.forward(rows, frames=True)
    how = {"locks": ["tilt", "turn"], "start": [0, 0, 0, 0, 0, 0, 0.2, 0.2]}
    single = stream.inverse(frames, start_from="given", **how)
    searched = stream.inverse(frames, start_from="search", **how)
    assert (searched.joints[:, 6:] == 0.2).all()
    assert searched.converged.all() and not single.converged.all()
    assert np.allclose(stream.forward(searched.joints, frames=True), frames, atol=1e-4)


def test_the_x_axis_counts_where_it_is_given(arm):
    stream = arm.stream()
    joints = joints_of(stream, 10)
    frames = stream.forward(joints, frames=True)
    nine = np.concatenate([frames[:, :3, 3], frames[:, :3, 2], frames[:, :3, 0]], axis=1)
    by_frame = stream.inverse(frames, joints + 0.01)
    by_nine = stream.inverse(nine, joints + 0.01)
    assert np.array_equal(by_frame.joints, by_nine.joints)
    turned = frames @ np.diag([-1.0, -1.0, 1.0, 1.0])  # the tool half a turn about itself
    other = stream.inverse(turned, joints + 0.01, start_from="search")
    assert not np.allclose(other.joints, by_frame.joints, atol=0.1)


def test_branches_are_the_ways_to_stand(trunnion_table):
    stream = trunnion_table.stream()
    found = stream.branches(LEANING, degrees=True)
    # As the README has them: two branches, the second at two turns of C.
    assert found.joints[:, 3] == pytest.approx([21.5681, -21.5681, -21.5681], abs=1e-4)
    assert found.joints[:, 4] == pytest.approx([18.4349, 198.4349, -161.5651], abs=1e-4)
    assert found.converged.all()
    direction = np.array(LEANING[3:]) / np.linalg.norm(LEANING[3:])
    for row in found.joints:
        pose = stream.forward(row, degrees=True)
        assert pose == pytest.approx([*LEANING[:3], *direction], abs=1e-4)
    assert len(stream.branches([1e4, 0, 0, 0, 0, 1])) == 0
    # A as far as 30 degrees: one of the two is left when the tool leans by more.
    steep = [10, 20, 30, 0, 1, 1]
    assert len(stream.branches(steep, limits=False)) > len(stream.branches(steep)) > 0


def test_branches_of_an_arm_are_searched(arm):
    stream = arm.stream()
    row = joints_of(stream, 1)[0]
    frame = stream.forward(row, frames=True)
    # With the positioner held, an arm with a wrist has two shoulders, two elbows and two wrists to
    # choose from, as far as the limits allow.
    found = stream.branches(frame, row, locks=["tilt", "turn"])
    assert 2 <= len(found) <= 8 and (found.joints[:, 6:] == row[6:]).all()
    assert any(np.allclose(joints, row, atol=1e-4) for joints in found.joints)
    assert np.allclose(stream.forward(found.joints, frames=True), frame, atol=1e-4)


def test_branches_are_those_of_the_program(arm):
    pose = [100, 50, 200, 0, 0.2, 1]
    found = arm.stream().branches(pose, degrees=True)
    links = ["--tool-link", "spindle_nose", "--part-link", "part"]
    printed = subprocess.run(
        [BUILD / "host" / "trunnion", "branches", arm.file, *map(str, pose), *links],
        capture_output=True,
        text=True,
        check=True,
    ).stdout.splitlines()
    assert f"{len(found)} of " in printed[0]
    rows = [line.split() for line in printed if " deg " in line and line.split()[0] in found.axes]
    shown = np.array([[float(word) for word in row[-min(len(found), 8):]] for row in rows]).T
    assert shown.shape[1] == 8 and found.joints[: len(shown)] == pytest.approx(shown, abs=1e-4)


def test_diagnosis_names_what_is_in_the_way(trunnion_table):
    stream = trunnion_table.stream()
    assert "X 9480.5084 mm (limits -300 to 300)" in stream.diagnose([10000, *LEANING[1:]])
    assert "rad" in stream.diagnose([0, 0, 0, 0, 1, -1])
    assert "deg (limits -120 to 30)" in stream.diagnose([0, 0, 0, 0, 1, -1], degrees=True)


@pytest.mark.parametrize(
    "call",
    [
        lambda stream: stream.forward([1, 2, 3]),
        lambda stream: stream.forward([[[1, 2, 3, 4, 5]]]),
        lambda stream: stream.forward(1.0),
        lambda stream: stream.forward([1, 2, 3, 4, math.nan]),
        lambda stream: stream.inverse([1, 2, 3]),
        lambda stream: stream.inverse(3.0),
        lambda stream: stream.inverse([1, 2, 3, 0, 0, 0]),
        lambda stream: stream.inverse([1, 2, math.inf, 0, 0, 1]),
        lambda stream: stream.inverse([*LEANING, 0.2, 0.6, 1.6]),
        lambda stream: stream.inverse(np.eye(4) * 2),
        lambda stream: stream.inverse(np.diag([1.0, 1, -1, 1])),
        lambda stream: stream.inverse(LEANING, [1, 2]),
        lambda stream: stream.inverse([LEANING] * 3, np.zeros((2, 5))),
        lambda stream: stream.inverse(LEANING, np.zeros((0, 5))),
        lambda stream: stream.inverse(LEANING, tolerance=0),
        lambda stream: stream.inverse(LEANING, tolerance=math.nan),
        lambda stream: stream.inverse(LEANING, max_iterations=0),
        lambda stream: stream.inverse(LEANING, max_iterations=100001),
        lambda stream: stream.inverse([LEANING] * 2, np.zeros((2, 5)), locks="C", start_from="search"),
        lambda stream: stream.branches([LEANING, LEANING]),
        lambda stream: stream.branches([]),
        lambda stream: stream.diagnose(np.zeros((0, 6))),
    ],
)
def test_refuses_what_makes_no_sense(trunnion_table, call):
    with pytest.raises(InputError) as raised:
        call(trunnion_table.stream())
    assert raised.value.sentence and raised.value.file in str(raised.value)


def test_nothing_is_no_error(trunnion_table):
    stream = trunnion_table.stream()
    assert stream.forward(np.zeros((0, 5))).shape == (0, 6)
    solved = stream.inverse(np.zeros((0, 6)))
    assert solved.joints.shape == (0, 5) and len(solved) == 0


def test_arrays_of_other_kinds_will_do(trunnion_table):
    stream = trunnion_table.stream()
    rows = joints_of(stream, 6)
    poses = stream.forward(rows)
    assert np.array_equal(stream.forward(np.asfortranarray(rows)), poses)
    assert np.array_equal(stream.forward(rows[::-1])[::-1], poses)
    assert np.array_equal(stream.forward(rows.tolist()), poses)
    assert stream.forward(rows.astype(np.float32)) == pytest.approx(poses, abs=1e-4)
    assert stream.forward([0, 0, 0, 0, 0]).tolist() == stream.forward(np.zeros(5, int)).tolist()


def test_calls_leave_the_machine_as_it_is(trunnion_table):
    stream = trunnion_table.stream()
    before = stream.inverse(LEANING).joints
    stream.branches(LEANING, [100, 50, -200, 0.2, 3], tool_length=70, locks=["C"])
    stream.diagnose([1e4, 0, 0, 0, 0, 1], [100, 50, -200, 0.2, 3], tool_length=70)
    with pytest.raises(InputError):
        stream.inverse(LEANING, locks=["C"], tolerance=-1, tool_length=70)
    assert np.array_equal(stream.inverse(LEANING).joints, before)
