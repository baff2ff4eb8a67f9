"""Nothing that Python refers to goes away, and nothing that it does not refer to stays."""

import copy
import gc
import inspect
import pickle
import resource
import weakref

import pytest

import trunnion
from example_mill import ExampleMill
from trunnion import (
    IkBody,
    IkChain,
    IkJtPrism,
    IkJtRot,
    IkJtState,
    IkMachine,
    IkSolutionAnalyst,
    IkSolverHybrid,
    IkSolverPsuedoInverse,
    IkStream,
    IkXformMat,
)


def is_gone(reference):
    gc.collect()
    return reference() is None


def test_a_joint_outlives_its_machine(mill):
    joint, solved = mill.c, mill.stream.SolveFK().GetVector().tolist()
    mill.machine.Reset()
    mill.__dict__.clear()
    gc.collect()
    joint.SetCurValue(0.5)
    # Its whole tree is there, and answers as before.
    base = joint.GetParentPtr().GetParentPtr()
    assert [kid.GetName() for kid in base.GetKidList()] == ["X", "A"]
    stream = IkStream()
    for name in ("Z", "C"):
        chain = IkChain()
        chain.FillFromBase2Node(base.SearchByName(name))
        stream.AddChain(chain)
    joint.SetCurValue(0)
    assert stream.SolveFK().GetVector().tolist() == solved


def test_a_child_keeps_what_it_hangs_on():
    tip = IkBody("tip")
    IkBody("base").AddChild(tip)
    gc.collect()
    assert tip.GetParentPtr().GetName() == "base"
    above = IkBody("above")
    above.AddChild(tip.GetParentPtr())  # two trees become one, whoever refers to which of them
    del above
    gc.collect()
    assert tip.GetParentPtr().GetParentPtr().GetName() == "above"


def test_a_parent_keeps_what_hangs_on_it():
    base = IkBody("base")
    base.AddChild(IkJtRot("B"))
    base.GetKidList()[0].AddChild(IkJtPrism("X"))
    gc.collect()
    assert base.SearchByName("X").GetParentPtr().GetName() == "B"


def test_trees_go_with_the_last_reference():
    base, child = IkBody("base"), IkBody("child")
    base.AddChild(child)
    references = [weakref.ref(base), weakref.ref(child)]
    del base
    assert references[0]() is None  # the Python object; its node is the child's parent still
    assert child.GetParentPtr().GetName() == "base"
    del child
    assert all(map(is_gone, references))


def test_a_chain_keeps_its_nodes():
    chain = IkChain()
    chain.AddNode(IkJtRot("B"))
    gc.collect()
    assert chain[0].GetName() == "B"
    states = chain.GetJointStates()
    chain.Reset()
    gc.collect()
    assert states[0].GetJoint().GetName() == "B"  # and so do states


def test_a_state_keeps_its_joint():
    state = IkJtState(IkJtRot("B"), 1.5)
    gc.collect()
    assert (state.GetJoint().GetName(), state.GetValue()) == ("B", 1.5)


def test_a_stream_keeps_its_chains_and_they_do_not_keep_it(mill):
    stream, chain = mill.stream, mill.stream.GetChain(1)
    stream.SetPartSpaceMatrix(IkXformMat.Translate(0, 0, 25), False)
    assert chain[-1].GetName() == "PartSpace"
    mill.__dict__.clear()
    gone = weakref.ref(stream)
    del stream
    assert is_gone(gone)
    # It has taken its part space with it.
    assert [chain[i].GetName() for i in range(len(chain))] == ["base", "A", "C"]
    assert chain.GetXformMat()[2, 3] == 0


def test_the_part_space_keeps_its_stream(mill):
    mill.stream.SetHasPartSpaceMatrix(True, False)
    body = mill.stream.GetChain(1)[-1]
    mill.__dict__.clear()
    gc.collect()
    assert body.GetName() == "PartSpace" and body.GetParentPtr() is None


def test_the_part_space_goes_nowhere_else(mill):
    mill.stream.SetHasPartSpaceMatrix(True, False)
    body = mill.stream.GetChain(1)[-1]
    for refused in (
        lambda: IkBody().AddChild(body),
        lambda: body.AddChild(IkBody()),
        lambda: IkChain().AddNode(body),
        lambda: IkChain().FillFromBase2Node(body),
        lambda: IkMachine().SetBaseNode(body),
    ):
        with pytest.raises(ValueError, match="part space"):
            refused()


def test_chains_may_be_shared(mill):
    other = IkStream()
    other.AddChain(mill.stream.GetChain(0))
    other.AddChain(mill.stream.GetChain(1))
    for stream in (mill.stream, other, mill.stream):
        stream.SetPartSpaceMatrix(IkXformMat.Translate(0, 0, 5), False)
    chain = mill.stream.GetChain(1)
    assert len(chain) == 6
    del stream, mill.stream
    mill.machine.Reset()
    gc.collect()
    assert len(chain) == 4  # that of the other stream stays
    assert other.SolveFK().GetVector().size == 6


def test_a_chain_that_is_emptied_leaves_its_stream_usable(mill):
    mill.stream.GetChain(1).Reset()
    mill.__dict__.update(a=None, c=None, machine=None)
    gc.collect()
    assert mill.stream.SolveFK().GetVector().tolist()[:3] == [0, 0, 0]
    mill.stream.ResetAllLocalLocks()
    assert mill.stream.SolveIK(mill.stream.SolveFK())[0]


def test_a_machine_goes_and_its_streams_stay(mill):
    machine = weakref.ref(mill.machine)
    stream = mill.stream
    mill.__dict__.clear()
    assert is_gone(machine)
    assert stream.SolveFK().GetVector().tolist() == [0, 0, 0, 0, 0, 1]


def test_one_tree_in_two_machines(mill):
    other = IkMachine()
    other.SetBaseNode(mill.machine.GetBaseNode())
    other.AddStream(mill.stream)
    mill.machine.Reset()
    assert other.GetBaseNode().GetName() == "base" and mill.machine.GetBaseNode() is None
    del other
    assert mill.stream.SolveFK().GetVector()[2] == 0


def test_a_solver_keeps_its_stream(mill):
    mill.a.SetCurValue(0.1)
    solver = IkSolverPsuedoInverse(mill.stream)
    mill.__dict__.clear()
    gc.collect()
    converged, answer = solver.SolveIK(ExampleMill.leaning_tool(30))
    assert converged and answer[0].GetJoint().GetName() == "X"


def test_the_joints_of_an_answer_outlive_everything(mill):
    mill.a.SetCurValue(0.1)
    _, answer = mill.stream.SolveIK(mill.leaning_tool(30))
    mill.__dict__.clear()
    gc.collect()
    assert answer.CommitValuesToJoints()
    assert answer[3].GetJoint().GetCurValue() == pytest.approx(-0.5, abs=1e-4)


def test_analyst_and_solver_that_refer_to_each_other_are_collected(mill):
    class Mutual(IkSolutionAnalyst):
        def AnalyzeSolutions(self, stream, start_states, samples):
            pass

    analyst = Mutual()
    analyst.solver = IkSolverHybrid(mill.stream)
    analyst.solver.SetAnalystObj(analyst)
    analyst.solver.SolveIK(mill.leaning_tool(30))
    references = [weakref.ref(analyst), weakref.ref(analyst.solver)]
    del analyst
    assert all(map(is_gone, references))


def use_unmade(kind):
    """Calls every method of an object whose __init__ was not called, and passes it on."""
    unmade = kind.__new__(kind)
    gc.collect()
    arguments = (unmade, IkBody(), 0, 0.5, "name", True)
    others = (IkBody(), IkChain(), IkStream(), IkMachine(), IkJtRot().GetOrigFrame())
    for name in dir(kind):
        method = inspect.getattr_static(kind, name)
        if name.startswith("__") or isinstance(method, (staticmethod, type, property, kind)):
            continue
        if not callable(method):
            continue
        for argument in arguments:
            for call in ((unmade,), (unmade, argument), (unmade, argument, argument)):
                with pytest.raises((TypeError, RuntimeError)):
                    method(*call)
    for other in others:
        for name in ("AddChild", "AddNode", "AddChain", "AddStream", "SetBaseNode", "SetOrigFrame"):
            if hasattr(other, name):
                with pytest.raises((TypeError, RuntimeError)):
                    getattr(other, name)(unmade)


@pytest.mark.parametrize("kind", [kind for name, kind in vars(trunnion).items() if name[:2] == "Ik"])
def test_an_object_that_is_not_made_yet_is_refused(kind):
    if kind is not IkSolutionAnalyst:
        use_unmade(kind)


def test_nodes_are_neither_copied_nor_pickled(mill):
    for one in (mill.x, mill.stream, mill.machine, mill.stream.GetChain(0)):
        for attempt in (copy.copy, copy.deepcopy, pickle.dumps):
            with pytest.raises(TypeError, match="pickle"):
                attempt(one)


def test_a_solver_keeps_the_analyst_and_lets_go_of_it(mill):
    class Nothing(IkSolutionAnalyst):
        def AnalyzeSolutions(self, stream, start_states, samples):
            pass

    solver = IkSolverHybrid(mill.stream)
    solver.SetAnalystObj(Nothing())
    gc.collect()
    analyst = weakref.ref(solver.GetAnalystObj())
    assert analyst() is not None
    solver.SetAnalystObj(None)
    assert is_gone(analyst)


def test_arrays_outlive_what_they_came_from(trunnion_table):
    poses = trunnion_table.stream().forward([[1, 2, 3, 0, 0]] * 1000)
    view = poses[::7]
    del poses, trunnion_table
    gc.collect()
    assert view[-1].tolist() == view[0].tolist()


def test_a_stream_keeps_its_machine(trunnion_table):
    stream = trunnion_table.stream()
    del trunnion_table
    gc.collect()
    assert stream.machine.name == "Trunnion mill, A/C table"
    assert stream.forward(stream.initial).shape == (6,)


def resident_kib():
    with open("/proc/self/statm") as file:
        return int(file.read().split()[1]) * resource.getpagesize() // 1024


def use_everything(machine):
    mill = ExampleMill()
    mill.stream.SetPartSpaceMatrix(IkXformMat.Translate(0, 0, 5), False)
    mill.a.SetCurValue(0.1)
    solver = IkSolverHybrid(mill.stream)

    class Raising(IkSolutionAnalyst):
        def AnalyzeSolutions(self, stream, start_states, samples):
            self.kept = solver, samples
            raise RuntimeError

    solver.SetAnalystObj(Raising())
    with pytest.raises(RuntimeError):
        solver.SolveIK(mill.leaning_tool(30))
    mill.stream.SolveIK(mill.leaning_tool(30))
    with pytest.raises(ValueError):
        mill.x.AddChild(mill.y)
    stream = machine.stream()
    poses = stream.forward([[1, 2, 3, 0.1, 0.2]] * 50)
    stream.inverse(poses)
    stream.branches(poses[0])
    with pytest.raises(ValueError):
        stream.forward([1, 2])
    machine.solve(poses[:5], points_only=True, start="free")


def test_memory_stays_flat(trunnion_table):
    sizes = []
    for _ in range(6):
        for _ in range(40):
            use_everything(trunnion_table)
        gc.collect()
        sizes.append(resident_kib())
    # What is lost each time makes every round grow; heaps grow once in a while. Of a tree, a stream
    # or an array, 2 KiB and more each, a round would lose 80.
    assert min(after - before for before, after in zip(sizes, sizes[1:])) < 64, sizes
