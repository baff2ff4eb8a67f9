"""State vectors: values in their places, sums under ranges, and places that are gone."""

import pytest

from trunnion import IkBody, IkJoint, IkJtPrism, IkJtRot, IkJtState, IkJtStateVector


def test_state_is_set_in_its_vector(mill):
    states = mill.stream.GetJointStates()
    assert states.GetNameVector() == ["X", "Y", "Z", "A", "C"]
    states[3].SetValue(0.25)
    assert states.GetValVector().tolist() == [0, 0, 0, 0.25, 0]
    assert states.FindValFromPtr(mill.a) == 0.25
    assert mill.a.GetCurValue() == 0  # a vector leaves the joints alone ...
    assert states.CommitValuesToJoints()
    assert mill.a.GetCurValue() == 0.25  # ... until it is committed


def test_states_are_walked_and_counted(mill):
    states = mill.stream.GetJointStates()
    assert [state.GetJoint() for state in states] == [mill.x, mill.y, mill.z, mill.a, mill.c]
    assert len(states) == states.Size() == 5
    assert states[-1].GetJoint() == mill.c
    for index in (5, -6):
        with pytest.raises(IndexError):
            states[index]


def test_state_of_a_shorter_vector_is_refused(mill):
    states = mill.stream.GetJointStates()
    last = states[4]
    states.Reset()
    with pytest.raises(IndexError, match="not in its vector any more"):
        last.SetValue(1)
    with pytest.raises(IndexError):
        last.GetJoint()


def test_kinds_of_joints_are_told_apart(mill):
    states = mill.stream.GetJointStates()
    assert states.GetLinearStateIndices() == [0, 1, 2]
    assert states.GetRotaryStateIndices() == [3, 4]
    states.SetValVector([600, 0, 0, -3, 0])  # X goes to 500, A to -2
    assert states.GetOutOfBoundIndices() == [0, 3]


def test_sums_respect_the_ranges_that_are_named(mill):
    states = mill.stream.GetJointStates()
    deltas = [600, 0, 0, 3, 0]
    states.AppendValues(deltas, IkJoint.JtLimitLinear)
    assert states.GetValVector().tolist() == [500, 0, 0, 3, 0]
    states.SubtractValues(deltas, IkJoint.JtLimitNone)
    assert states.GetValVector().tolist() == [-100, 0, 0, 0, 0]


def test_counts_have_to_agree(mill):
    states = mill.stream.GetJointStates()
    for call in (
        lambda: states.SetValVector([1, 2]),
        lambda: states.AppendValues([1] * 6, IkJoint.JtLimitAll),
    ):
        with pytest.raises(ValueError, match="one number for each of the 5 states"):
            call()


def test_vectors_are_joined_by_joint():
    x, b = IkJtPrism("X"), IkJtRot("B")
    left, right = IkJtStateVector(), IkJtStateVector()
    left.AddState(IkJtState(x, 1))
    right.AddState(IkJtState(x, 5))
    right.AddState(IkJtState(b, 2))
    both = left + right
    assert both.GetNameVector() == ["X", "B"] and both.GetValVector().tolist() == [1, 2]
    assert right.FindStateByJointPtr(b) == 1 and left.FindStateByJointPtr(b) == -1
    assert left.FindValFromPtr(b) is None


def test_vectors_are_compared_within_tolerances(mill):
    a, b = mill.stream.GetJointStates(), mill.stream.GetJointStates()
    b[0].SetValue(0.05)
    b[3].SetValue(0.001)
    assert a.Compare(b, 0.1, 0.01) == 0
    assert a.Compare(b, 0.01, 0.01) == 1
    assert a.Compare(b, 0.1, 0.0001) == 1


def test_state_by_itself_stands_at_the_joint():
    joint = IkJtRot("B")
    joint.SetCurValue(0.75)
    state = IkJtState(joint)
    assert state.GetValue() == 0.75 and state.GetJoint() == joint
    with pytest.raises(TypeError):
        IkJtState(IkBody())
