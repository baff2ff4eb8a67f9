"""The tree: names, frames, joints, and what would not be a tree."""

import math

import numpy as np
import pytest

from trunnion import IkBody, IkJoint, IkJtPrism, IkJtRot, IkStream, IkXformMat


def test_a_node_is_found_by_its_name(mill):
    base = mill.machine.GetBaseNode()
    assert base.SearchByName("C") == mill.c
    assert base.SearchByName("c") is None
    assert mill.c.GetParentPtr() == mill.a
    assert [kid.GetName() for kid in base.GetKidList()] == ["X", "A"]
    assert base.GetParentPtr() is None


def test_names_may_be_of_any_letters():
    body = IkBody("Drehtisch Ä – 台")
    assert body.GetName() == "Drehtisch Ä – 台"
    body.SetType("Körper")
    assert body.GetType() == "Körper"
    assert "Drehtisch" in repr(body) and "IkBody" in repr(body)


def test_references_to_one_node_are_equal(mill):
    again = mill.machine.GetBaseNode().SearchByName("X")
    assert again == mill.x and hash(again) == hash(mill.x)
    assert again is mill.x  # as long as there is the first one
    assert mill.x != mill.y and mill.x != "X"
    assert {mill.x: 1}[again] == 1


def test_nodes_come_as_what_they_are(mill):
    kinds = [type(kid) for kid in mill.machine.GetBaseNode().GetKidList()]
    assert kinds == [IkJtPrism, IkJtRot]
    assert mill.x.IsJoint() and not mill.x.IsRotary() and mill.a.IsRotary()
    assert not IkBody().IsJoint()


def test_joint_moves_by_its_value():
    joint = IkJtRot("B")
    joint.SetJtPrimitive(IkJoint.JtPrimRotY)
    joint.SetOrigFrame(IkXformMat.Translate(0, 0, 100))
    turned = np.asarray(joint.GetXformMat(math.pi / 2))
    assert np.allclose(turned @ [1, 0, 0, 1], [0, 0, 99, 1])  # x goes to -z
    joint.SetCurValue(math.pi / 2)
    assert np.array_equal(np.asarray(joint.GetXformMat()), turned)
    joint.SetDirectionReversed(True)
    assert np.allclose(np.asarray(joint.GetXformMat()) @ [1, 0, 0, 1], [0, 0, 101, 1])


def test_joint_keeps_what_it_is_told():
    joint = IkJtPrism("X")
    joint.SetBounds(-5, 7.5)
    joint.SetInitialValue(2)
    joint.SetIsLocked(True)
    joint.SetJtPrimitive(IkJoint.JtPrimTransZ)
    assert (joint.GetLowBound(), joint.GetHiBound()) == (-5, 7.5)
    assert joint.GetInitialValue() == 2 and joint.IsLocked()
    assert joint.GetJtPrimitive() == IkJoint.JtPrimTransZ
    joint.SetCurValue(99)  # no value is clamped
    assert joint.GetCurValue() == 99


def test_a_child_is_added_once():
    base, child = IkBody("base"), IkBody("child")
    base.AddChild(child)
    with pytest.raises(ValueError, match='"child" hangs there already; a node is added once'):
        base.AddChild(child)
    assert len(base.GetKidList()) == 1


def test_a_node_has_one_parent():
    base, other, child = IkBody("base"), IkBody("other"), IkBody("child")
    base.AddChild(child)
    with pytest.raises(ValueError, match='hangs on "base" already'):
        other.AddChild(child)
    assert other.GetKidList() == [] and child.GetParentPtr() == base


def test_a_tree_has_no_circle():
    base, middle, tip = IkBody("base"), IkBody("middle"), IkBody("tip")
    base.AddChild(middle)
    middle.AddChild(tip)
    for node in (base, middle, tip):
        with pytest.raises(ValueError, match="own ancestor|already"):
            node.AddChild(base)
    assert base.GetParentPtr() is None


def test_a_tree_is_at_most_a_thousand_nodes_deep():
    base = tip = IkBody("base")
    for _ in range(999):
        child = IkBody()
        tip.AddChild(child)
        tip = child
    with pytest.raises(ValueError, match="1000 nodes deep"):
        tip.AddChild(IkBody())
    with pytest.raises(ValueError, match="1000 nodes deep"):
        IkBody("above").AddChild(base)
    tip.SetName("the last")
    assert base.SearchByName("the last") == tip


def test_only_nodes_are_children():
    for wrong in (None, "X", IkStream()):
        with pytest.raises(TypeError):
            IkBody().AddChild(wrong)


def test_node_classes_are_not_derived_from():
    with pytest.raises(TypeError):
        type("Mine", (IkBody,), {})


def test_frames_are_copies():
    body = IkBody()
    frame = body.GetOrigFrame()
    frame[0, 3] = 5
    assert body.GetOrigFrame()[0, 3] == 0
    body.SetOrigFrame(frame)
    assert body.GetOrigFrame()[0, 3] == 5
    body.SetWorldFrame(frame)
    assert body.GetWorldFrame()[0, 3] == 5 and body.IsDirty()
    assert body.UpdateFrames() and not body.IsDirty()
