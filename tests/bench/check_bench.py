"""Runs the benchmarks quickly and checks what they report: who took part, how many poses each solved,
and what was taken from the heap. Times are not looked at beyond being there.

usage: check_bench.py PROGRAM
"""

import json
import subprocess
import sys
import tempfile
from pathlib import Path

FIVE_AXES = ["head-head-ca", "head-table-bc", "mill-turn-bc", "nutating-bc", "trunnion-ac"]
MACHINES = FIVE_AXES + ["three-axis-mill", "six-axis-arm", "arm-on-track"]
STAGES = ["forward", "jacobian", "pass"]
SOLVES = ["stream-cold", "stream-warm", "object-cold", "object-warm", "hybrid"]

# At least this share of the poses, on the machines that have no joints to spare. A cold solve has one
# start, and limits in its way; a hybrid one has up to sixteen, unless more than three joints turn.
LEAST_SOLVED = {"stream-cold": 0.5, "stream-warm": 1.0, "object-cold": 0.5, "object-warm": 1.0}
LEAST_SOLVED_BY_KDL = {"stream-cold": 0.3, "stream-warm": 0.9}

# TNT takes 2 for a vector and 4 for a matrix. JAMA's copy of the matrix, U, V, the singular values and
# two vectors to work in; U once more for the caller: 4 * 4 + 3 * 2.
TAKEN_BY_JAMA = 22.0
MOST_BEYOND_IN_SOLVE = 10


def require(holds, what):
    if not holds:
        raise SystemExit(f"does not hold: {what}")


def run(program, *arguments):
    done = subprocess.run([program, *arguments], capture_output=True, text=True)
    if done.returncode != 0:
        raise SystemExit(f"exit {done.returncode}: {arguments}\n{done.stdout}{done.stderr}")


def check_solved(scene, contenders):
    operation, machine = scene["operation"], scene["machine"]
    where = f"{operation} {machine}"
    solved = {name: entry["solved"] for name, entry in contenders.items() if "solved" in entry}
    require(solved["library"] == solved["plain"], f"{where}: both formulations solve the same")
    if operation == "hybrid":
        require(machine not in FIVE_AXES or solved["library"] == 1.0, f"{where}: all solved")
    elif machine != "arm-on-track":
        require(solved["library"] >= LEAST_SOLVED[operation], f"{where}: {solved}")
    for name in {"kdl-nr-jl", "kdl-lma"} & solved.keys():
        require(solved[name] >= LEAST_SOLVED_BY_KDL[operation], f"{where}: {solved}")


def check_scenes(scenes):
    expected = {(operation, machine) for operation in STAGES + SOLVES for machine in MACHINES}
    require({(at["operation"], at["machine"]) for at in scenes} == expected, "every scene is there")
    for scene in scenes:
        contenders = {entry["name"]: entry for entry in scene["contenders"]}
        where = f"{scene['operation']} {scene['machine']}"
        require({"library", "plain"} <= contenders.keys(), f"{where}: both formulations")
        require(all(entry["nanoseconds"] > 0 for entry in contenders.values()), f"{where}: times")
        if scene["operation"] in SOLVES:
            require("jama" in contenders, f"{where}: its decompositions alone")
            check_solved(scene, contenders)


def check_allocations(allocations):
    counted = {(at["operation"], at["machine"]) for at in allocations}
    require(counted == {(operation, machine) for operation in ("stream", "object")
                        for machine in FIVE_AXES + ["six-axis-arm"]}, "every machine is counted")
    for at in allocations:
        require(at["in_decomposition"] == TAKEN_BY_JAMA, f"{TAKEN_BY_JAMA} by JAMA: {at}")
        require(at["beyond_in_pass"] == 0.0, f"a pass takes nothing of its own: {at}")
        require(0 <= at["beyond_in_solve"] <= MOST_BEYOND_IN_SOLVE, f"a solve takes little: {at}")


def check_ratios(program, folder):
    file = Path(folder, "ratios.json")
    run(program, "--ratios", "--quick", f"--ratios_out={file}")
    report = json.loads(file.read_text())
    check_scenes(report["scenes"])
    check_allocations(report["allocations"])
    require([at["joints"] for at in report["growth"]] == [3, 5, 6, 9, 12, 16], "passes by joints")
    with_kdl = any(entry["name"] == "kdl-lma" for scene in report["scenes"]
                   for entry in scene["contenders"])
    require(len(report["aims"]) == (13 if with_kdl else 10), "every aim is measured")
    for aim in report["aims"]:
        met = (aim["worst"] <= aim["at_most"] if "at_most" in aim
               else aim["worst"] >= aim["at_least"])
        require(aim["met"] == met, f"told as measured: {aim}")


def check_benchmarks(program, folder):
    file = Path(folder, "benchmarks.json")
    run(program, "--quick", "--benchmark_filter=stream-warm/trunnion-ac", f"--benchmark_out={file}")
    report = json.loads(file.read_text())
    names = [entry["name"].split("/")[:3] for entry in report["benchmarks"]]
    for contender in ("library", "plain", "jama"):
        require(["stream-warm", "trunnion-ac", contender] in names, f"{contender} among {names}")
    require(all(entry["items_per_second"] > 0 for entry in report["benchmarks"]), "solves a second")


def main():
    with tempfile.TemporaryDirectory() as folder:
        check_ratios(sys.argv[1], folder)
        check_benchmarks(sys.argv[1], folder)


main()
