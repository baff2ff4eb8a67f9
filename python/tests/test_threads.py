"""One solve at a time, whoever asks: the others wait, and the answers are those of one thread."""

import os
import signal
import subprocess
import sys
import threading
import time
from concurrent.futures import ThreadPoolExecutor

import numpy as np
import pytest

import trunnion
from conftest import SAMPLES
from example_mill import ExampleMill
from trunnion import IkSolutionAnalyst, IkSolverHybrid, IkSolverPsuedoInverse


def poses_of(stream, count):
    """Poses that a stream reaches, near to each other."""
    steps = np.arange(count)[:, None] * 1e-3
    waves = np.sin(steps + np.arange(len(stream.axes)))
    middle = [0, 0, -150, -0.6, 0]
    return stream.forward(middle + np.array([20, 20, 20, 0.2, 0.4]) * waves)


def test_batches_in_threads_are_those_of_one(trunnion_table):
    stream = trunnion_table.stream()
    poses = poses_of(stream, 1500)
    expected = stream.inverse(poses, tool_length=50).joints
    assert not np.isnan(expected).any()
    # The same machine in all threads, and one of its own for each.
    own = [trunnion.load(trunnion_table.file).stream() for _ in range(2)]
    with ThreadPoolExecutor(4) as pool:
        running = [
            pool.submit(one.inverse, poses, tool_length=50) for one in [stream, stream, *own]
        ]
        lengths = [pool.submit(stream.forward, expected, tool_length=50.0) for _ in range(20)]
    for one in running:
        assert np.array_equal(one.result().joints, expected)
    for one in lengths:
        assert np.allclose(one.result(), poses, atol=2e-4)


def test_low_level_solves_in_threads_are_those_of_one():
    def solve(_):
        mill = ExampleMill()
        mill.a.SetCurValue(0.1)
        answers = []
        for x in range(60):
            answers.append(mill.stream.SolveIK(mill.leaning_tool(x))[1].GetValVector())
            solver = IkSolverPsuedoInverse(mill.stream)
            answers.append(solver.SolveIK(mill.leaning_tool(x))[1].GetValVector())
        return np.array(answers)

    expected = solve(0)
    with ThreadPoolExecutor(4) as pool:
        for answers in pool.map(solve, range(8)):
            assert np.array_equal(answers, expected)


def test_one_stream_may_be_used_by_all_threads(mill):
    mill.a.SetCurValue(0.1)
    expected = mill.stream.SolveIK(mill.leaning_tool(30))[1].GetValVector()

    def use(number):
        for _ in range(50):
            if number == 0:
                mill.stream.SetLocalLock(mill.x, False)
                mill.stream.GetChain(0).GetXformMat()
            else:
                answer = mill.stream.SolveIK(mill.leaning_tool(30))[1]
                assert np.array_equal(answer.GetValVector(), expected)

    with ThreadPoolExecutor(4) as pool:
        list(pool.map(use, range(4)))


def test_an_analyst_may_wait_for_a_solve_in_another_thread(mill):
    class Delegating(IkSolutionAnalyst):
        def AnalyzeSolutions(self, stream, start_states, samples):
            with ThreadPoolExecutor(1) as pool:
                self.answer = pool.submit(stream.SolveIK, mill.leaning_tool(40)).result(timeout=20)

    mill.a.SetCurValue(0.1)
    solver, analyst = IkSolverHybrid(mill.stream), Delegating()
    solver.SetAnalystObj(analyst)
    solver.SolveIK(mill.leaning_tool(30))
    assert analyst.answer[0]


def test_analysts_in_threads_do_not_wait_for_each_other():
    # Each analyst goes on when both are asked: with one of them asked under a lock it never would.
    both = threading.Barrier(2, timeout=20)

    class Meeting(IkSolutionAnalyst):
        def AnalyzeSolutions(self, stream, start_states, samples):
            both.wait()

    def solve(_):
        mill = ExampleMill()
        solver = IkSolverHybrid(mill.stream)
        solver.SetAnalystObj(Meeting())
        return len(solver.SolveIK(mill.leaning_tool(30))[1])

    with ThreadPoolExecutor(2) as pool:
        assert list(pool.map(solve, range(2))) == [5, 5]


def test_other_python_code_runs_during_a_batch(trunnion_table):
    stream = trunnion_table.stream()
    poses = poses_of(stream, 20_000)
    ticks = []
    done = threading.Event()

    def tick():
        while not done.is_set():
            ticks.append(time.monotonic())
            time.sleep(0.002)

    ticking = threading.Thread(target=tick)
    ticking.start()
    begin = time.monotonic()
    stream.inverse(poses)
    end = time.monotonic()
    done.set()
    ticking.join()
    meanwhile = [moment for moment in ticks if begin < moment < end]
    # It takes a tenth of a second and more; a batch that kept the lock would let none through.
    assert len(meanwhile) >= 5


def test_a_signal_ends_a_batch(arm):
    stream = arm.stream()
    far = np.tile([0.0, 0.0, 1e6, 0.0, 0.0, 1.0], (1_000_000, 1))  # minutes, if nothing ends it
    timer = threading.Timer(0.3, os.kill, (os.getpid(), signal.SIGINT))
    timer.start()
    begin = time.monotonic()
    with pytest.raises(KeyboardInterrupt):
        stream.inverse(far)
    assert time.monotonic() - begin < 10
    # Tool, locks and joints are as they were.
    assert np.array_equal(stream.forward(stream.initial), arm.stream().forward(stream.initial))
    assert stream.inverse(stream.forward(stream.initial)).converged


def test_a_forked_child_may_solve_while_its_parent_does(trunnion_table):
    stream = trunnion_table.stream()
    poses = poses_of(stream, 20_000)
    with ThreadPoolExecutor(1) as pool:
        running = pool.submit(stream.inverse, poses)
        time.sleep(0.02)  # the other thread is at work, and the child has nobody to give back a lock
        child = os.fork()
        if child == 0:
            machine = trunnion.load(SAMPLES / "machines" / "trunnion-ac.toml")
            solved = machine.stream().inverse(poses[0])
            os._exit(0 if solved.converged else 1)
        deadline = time.monotonic() + 20
        ended, status = 0, 0
        while ended == 0:
            if time.monotonic() > deadline:
                os.kill(child, signal.SIGKILL)
                os.waitpid(child, 0)
                pytest.fail("the child hangs")
            time.sleep(0.01)
            ended, status = os.waitpid(child, os.WNOHANG)
        assert status == 0
        assert running.result().converged.all()


@pytest.mark.parametrize("fork", [False, True])
def test_the_interpreter_may_end_while_threads_solve(fork):
    # Daemon threads in the middle of a batch, one at work and one that waits for it.
    script = f"""
import os, threading, time
import numpy as np
import trunnion

stream = trunnion.load({trunnion_table_file()!r}).stream()
far = np.tile([0.0, 0, 1e6, 0, 0, 1], (1_000_000, 1))
for _ in range(2):
    threading.Thread(target=stream.inverse, args=[far], daemon=True).start()
time.sleep(0.2)
if {fork} and os.fork() == 0:
    assert stream.inverse([10, 20, 30, 0.1, 0.3, 0.8]).converged
    raise SystemExit
if {fork}:
    assert os.wait()[1] == 0
print("ends")
"""
    begin = time.monotonic()
    done = subprocess.run(
        [sys.executable, "-c", script], capture_output=True, text=True, timeout=60, check=False
    )
    assert (done.returncode, done.stdout, done.stderr) == (0, "ends\n", "")
    assert time.monotonic() - begin < 30


def trunnion_table_file():
    return str(SAMPLES / "machines" / "trunnion-ac.toml")
