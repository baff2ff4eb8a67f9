"""Transforms: arrays in and out, products, and what they refuse."""

import copy
import math

import numpy as np
import pytest

from trunnion import IkEndState, IkXformMat, InputError


def test_goes_to_an_array_and_back():
    array = np.arange(16.0).reshape(4, 4)
    assert np.array_equal(np.asarray(IkXformMat(array)), array)
    assert np.asarray(IkXformMat(array)) is not np.asarray(IkXformMat(array))


def test_is_the_identity_at_first():
    assert np.array_equal(np.asarray(IkXformMat()), np.eye(4))


def test_product_takes_the_right_motion_in_the_left_frame():
    # After a quarter turn about z, x points along y: 5 along x ends at y = 5.
    frame = IkXformMat.RotZ(math.pi / 2) @ IkXformMat.Translate(5, 0, 0)
    assert np.allclose(np.asarray(frame)[:3, 3], [0, 5, 0], atol=1e-15)
    other = IkXformMat.RotZ(math.pi / 2)
    other.TranslateThis(5, 0, 0)
    assert np.array_equal(np.asarray(other), np.asarray(frame))


def test_inverse_undoes_a_rigid_transform():
    frame = IkXformMat.Translate(1, 2, 3) @ IkXformMat.RotX(0.4) @ IkXformMat.RotY(-1.1)
    assert np.allclose(np.asarray(frame @ frame.QuickInvert()), np.eye(4), atol=1e-15)
    assert frame.IsOrthogonal(1e-12)


def test_elements_are_read_and_set():
    frame = IkXformMat()
    frame[1, 3] = 7.5
    assert frame[1, 3] == 7.5
    for place in [(4, 0), (0, 4), (-1, 0)]:
        with pytest.raises(IndexError):
            frame[place]


def test_array_stands_for_a_transform():
    state = IkEndState()
    state.SetCompleteState(np.asarray(IkXformMat.Translate(1, 2, 3)))
    state.SetCompleteState([[1, 0, 0, 4], [0, 1, 0, 5], [0, 0, 1, 6], [0, 0, 0, 1]])
    assert state.GetVector().tolist() == [4, 5, 6, 0, 0, 1]


def test_refuses_other_shapes():
    with pytest.raises(InputError, match="4 by 4"):
        IkXformMat(np.eye(3))


def test_copies_are_apart():
    frame = IkXformMat.Translate(1, 0, 0)
    for other in (copy.copy(frame), copy.deepcopy(frame)):
        other[0, 3] = 2
        assert frame[0, 3] == 1


def test_end_state_counts_what_its_filter_says():
    state = IkEndState(IkXformMat.Translate(1, 2, 3))
    assert state.GetFilter() == [False, False, True, True]
    state.SetFilter([True, False, False, True])
    assert state.VectSize() == 6
    assert state.GetVector().tolist() == [1, 2, 3, 1, 0, 0]  # position, then the x axis
    state.SetVector([4, 5, 6, 0, 1, 0])
    assert state.GetCompleteState()[1, 0] == 1
    with pytest.raises(ValueError, match="give 6 numbers"):
        state.SetVector([1, 2, 3])


def test_difference_of_end_states_takes_the_same_filter():
    a, b = IkEndState(IkXformMat.Translate(1, 2, 3)), IkEndState()
    assert a.Diff(b).tolist() == [1, 2, 3, 0, 0, 0]
    b.SetFilter([False, False, False, True])
    with pytest.raises(ValueError, match="CopyFilter"):
        a.Diff(b)
    b.CopyFilter(a)
    assert b.Diff(a).tolist() == [-1, -2, -3, 0, 0, 0]
