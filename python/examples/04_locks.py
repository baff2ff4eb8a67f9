"""Holding joints: by their own lock, by a lock of one stream, or all rotary ones for one solve."""

from example_mill import ExampleMill
from trunnion import IkEndState, IkXformMat


def solve(what, mill, target, lock_rotary=False):
    is_reached, answer = mill.stream.SolveIK(target, lock_rotary=lock_rotary)
    values = [f"{state.GetJoint().GetName()} {state.GetValue():.3f}" for state in answer]
    print(f"{what:<28}", *(["reached at", *values] if is_reached else ["not reached"]))


mill = ExampleMill()
mill.a.SetCurValue(0.3)
mill.c.SetCurValue(0.2)

# A position alone: three numbers for five joints, so that some may be held.
target = IkEndState(IkXformMat.Translate(30, 20, 10))
target.SetFilter([False, False, False, True])

solve("nothing held:", mill, target)
mill.x.SetIsLocked(True)  # in every solve
solve("X held by its own lock:", mill, target)
mill.x.SetIsLocked(False)
mill.stream.SetLocalLock(mill.c, True)  # in this stream's solves
solve("C held by the stream:", mill, target)
mill.stream.ResetAllLocalLocks()
solve("all rotary joints held:", mill, target, lock_rotary=True)  # in this solve
mill.x.SetIsLocked(True)
solve("those and X held:", mill, target, lock_rotary=True)
