"""Chains, streams and the machine that holds them."""

import math

import numpy as np
import pytest

from trunnion import IkBody, IkChain, IkEndState, IkJtRot, IkMachine, IkStream, IkXformMat


def test_chain_leads_from_base_to_tip(mill):
    chain = mill.stream.GetChain(1)
    assert [chain[i].GetName() for i in range(len(chain))] == ["base", "A", "C"]
    assert chain.GetAt(-1) == mill.c
    with pytest.raises(IndexError):
        chain.GetAt(3)
    mill.c.SetCurValue(math.pi / 2)
    assert np.allclose(np.asarray(chain.GetXformMat()) @ [1, 0, 0, 1], [0, 1, 0, 1])
    states = chain.GetJointStates()
    states[1].SetValue(0)
    assert np.allclose(np.asarray(chain.GetXformMat(states)), np.eye(4))


def test_chains_are_compared_by_their_nodes(mill):
    a, b = IkChain(), IkChain()
    a.FillFromBase2Node(mill.c)
    b.AddNode(mill.a)
    b.AddNode(mill.c)
    assert a != b
    b.AddNodeAtHead(mill.machine.GetBaseNode())
    assert a == b and a == mill.stream.GetChain(1)
    b.RemoveTail()
    assert a != b and a != "chain"
    b.Reset()
    assert b.Size() == 0


def test_forward_and_inverse_agree(mill):
    states = mill.stream.GetJointStates()
    states.SetValVector([12, -34, 56, 0.3, -0.4])
    target = mill.stream.SolveFK(states)
    states.AppendValues([1, 1, 1, 0.05, 0.05], mill.x.JtLimitNone)
    states.CommitValuesToJoints()
    converged, answer = mill.stream.SolveIK(target)
    assert converged
    assert np.allclose(answer.GetValVector(), [12, -34, 56, 0.3, -0.4], atol=1e-3)


def test_unreached_target_tells_the_joints_beyond_their_bounds(mill):
    mill.a.SetCurValue(0.1)
    converged, answer = mill.stream.SolveIK(mill.leaning_tool(900))
    assert not converged and answer.GetNameVector() == ["X"]


def test_tool_alone_is_in_machine_coordinates(mill):
    mill.c.SetCurValue(1.0)
    mill.x.SetCurValue(10)
    assert mill.stream.SolveFK(tool_only=True).GetVector()[:3].tolist() == [10, 0, 0]


def test_commit_moves_the_joints(mill):
    states = mill.stream.GetJointStates()
    states[0].SetValue(5)
    mill.stream.SolveFK(states)
    assert mill.x.GetCurValue() == 0
    mill.stream.SolveFK(states, commit=True)
    assert mill.x.GetCurValue() == 5


def test_locks_hold_a_joint(mill):
    stream = mill.stream
    assert stream.GetLocalLock(mill.c) is False
    assert stream.SetLocalLock(mill.c, True) and stream.GetLocalLock(mill.c)
    assert stream.GetJointLockStatus(mill.c, IkStream.LocalLockOnly) is True
    assert stream.GetJointLockStatus(mill.c, IkStream.GlobalLockOnly) is False
    other = IkJtRot("elsewhere")
    assert not stream.SetLocalLock(other, True) and stream.GetLocalLock(other) is None
    assert stream.GetJointLockStatus(other, IkStream.LocalLockOnly) is None
    stream.SetLocalLockAllRotary(True)
    assert stream.GetLocalLock(mill.a) and not stream.GetLocalLock(mill.x)
    stream.ResetAllLocalLocks()
    assert not stream.GetLocalLock(mill.a)


def test_part_space_moves_the_part(mill):
    stream = mill.stream
    assert stream.GetPartSpaceInfo() == (False, False)
    stream.SetPartSpaceMatrix(IkXformMat.Translate(0, 0, 25), False)
    assert stream.GetPartSpaceInfo() == (True, False)
    # Seen from a part that is 25 up the tool at the machine's zero is 25 down.
    assert stream.SolveFK().GetVector()[:3].tolist() == [0, 0, -25]
    assert stream.GetChain(1)[-1].GetName() == "PartSpace"
    assert stream.GetPartSpaceMatrix()[2, 3] == 25
    stream.SetHasPartSpaceMatrix(False, False)
    assert stream.SolveFK().GetVector()[:3].tolist() == [0, 0, 0]


def test_parts_of_the_loop(mill):
    nodes = mill.stream.GetSubNodeChain(IkStream.PartToToolChain)
    assert [node.GetName() for node in nodes] == ["C", "A", "base", "X", "Y", "Z"]


def test_machine_finds_its_streams(mill):
    machine = mill.machine
    mill.stream.SetId(7)
    assert machine.GetNumStreams() == 1
    assert machine.GetStreamById(7) is mill.stream is machine.GetStreamByIndex(0)
    with pytest.raises(KeyError):
        machine.GetStreamById(8)
    with pytest.raises(IndexError):
        machine.GetStreamByIndex(1)
    with pytest.raises(ValueError, match="has this stream already"):
        machine.AddStream(mill.stream)
    machine.RemoveStream(8)
    assert machine.GetNumStreams() == 1
    machine.RemoveStream(7)
    assert machine.GetNumStreams() == 0
    assert mill.stream.SolveFK().GetVector()[2] == 0  # the stream is still there


def test_machine_lists_and_resets_its_joints(mill):
    mill.a.SetInitialValue(0.5)
    mill.machine.RecurseInitJointValues()
    states = mill.machine.GetJointStates()
    assert states.GetNameVector() == ["Z", "Y", "X", "C", "A"]  # each after those below it
    assert states.FindValFromPtr(mill.a) == 0.5
    mill.x.SetCurValue(3)
    mill.a.SetCurValue(3)
    mill.machine.RecurseInitJointValues(mill.a)
    assert (mill.x.GetCurValue(), mill.a.GetCurValue()) == (3, 0.5)


def test_a_stream_without_chains_is_harmless():
    stream = IkStream()
    assert stream.SolveFK().GetVector().tolist() == [0, 0, 0, 0, 0, 1]
    converged, answer = stream.SolveIK(IkEndState(IkXformMat.Translate(1, 0, 0)))
    assert not converged and len(answer) == 0
    assert IkMachine().GetBaseNode() is None
    assert len(IkMachine().GetJointStates()) == 0
    with pytest.raises(IndexError):
        stream.GetChain(0)
    assert IkBody() != stream
