"""Runs what the README shows: its commands, its machine file and its program.

usage: check_documents.py ROOT BUILD CXX

ROOT is the checkout, BUILD a build of it with tests, CXX the compiler. Fenced blocks are taken in
order: `sh` is run in ROOT, `toml` is given to the program, `cpp` blocks make up one program, and a
`text` block behind any of these is what it must end with. Numbers may differ in the fourth digit,
times altogether.
"""

import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

NUMBER = re.compile(r"[-+]?\d+(?:\.\d+)?(?:e[-+]?\d+)?$")


def blocks(text):
    """The fenced blocks as (language, content)."""
    return re.findall(r"^```(\w+)\n(.*?)^```$", text, re.DOTALL | re.MULTILINE)


def run(command, root, **options):
    done = subprocess.run(command, cwd=root, capture_output=True, text=True, **options)
    if done.returncode != 0:
        raise SystemExit(f"exit {done.returncode}: {command}\n{done.stdout}{done.stderr}")
    return done.stdout


def words_agree(shown, printed):
    if shown == printed:
        return True
    if not (NUMBER.match(shown) and NUMBER.match(printed)):
        return False
    a, b = float(shown), float(printed)
    return abs(a - b) <= 1e-3 * max(abs(a), abs(b))


def lines_agree(shown, printed):
    a, b = shown.split(), printed.split()
    if a[:1] == ["time"] == b[:1]:
        return True
    return len(a) == len(b) and all(map(words_agree, a, b))


def check_output(shown, printed):
    """The shown lines must stand in the printed ones, next to each other."""
    wanted = shown.splitlines()
    lines = printed.splitlines()
    for start in range(len(lines) - len(wanted) + 1):
        if all(map(lines_agree, wanted, lines[start:])):
            return
    raise SystemExit(f"shown:\n{shown}\nprinted:\n{printed}")


def run_program(source, root, build, compiler, folder):
    file = Path(folder, "shown.cpp")
    file.write_text(source)
    program = Path(folder, "shown")
    library = build / "src"
    run([compiler, "-std=c++17", "-Wall", "-Wextra", "-Werror", f"-I{root / 'include'}", str(file),
         f"-L{library}", "-ltrunnion", f"-Wl,-rpath,{library}", "-o", str(program)], root)
    return run([str(program)], root)


def main():
    root, build, compiler = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve(), sys.argv[3]
    counts = {}
    source = ""
    printed = ""
    with tempfile.TemporaryDirectory() as folder:
        for language, content in blocks((root / "README.md").read_text()):
            counts[language] = counts.get(language, 0) + 1
            if language == "sh":
                printed = run(["bash", "-euo", "pipefail", "-c", content], root)
            elif language == "toml":
                machine = Path(folder, "shown.toml")
                machine.write_text(content)
                printed = run([str(build / "host" / "trunnion"), "pose", str(machine)], root)
            elif language == "cpp":
                source += content
                if source.rstrip().endswith("\n}"):
                    printed = run_program(source, root, build, compiler, folder)
                    source = ""
            elif language == "text":
                check_output(content, printed)
            else:
                raise SystemExit(f"no rule for a block of {language}")
    if source:
        raise SystemExit("the program is not complete")
    for path in re.findall(r"`((?:scripts|include|src|host|samples|tests)/[\w/.-]*)`",
                           (root / "README.md").read_text()):
        if not os.path.exists(root / path):
            raise SystemExit(f"README names {path}, which does not exist")
    print("README: " + ", ".join(f"{n} {language}" for language, n in sorted(counts.items())))


main()
