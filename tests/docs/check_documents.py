"""Runs what the documents show: the README's commands, its machine file and its program, and the
commands of samples/README.md, these in a copy of that folder, and those of docs/.

usage: check_documents.py ROOT BUILD CXX

ROOT is the checkout, BUILD a build of it with tests, CXX the compiler. Fenced blocks are taken in
order: `sh` is run in ROOT, `toml` is given to the program, `cpp` blocks make up one program. A `text`
block behind any of these must stand in what it prints, and a table that a command prints must stand in
the README. Numbers may differ in the fourth digit, in tables by a few cases, times altogether.
"""

import os
import re
import shutil
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


FEW_CASES = 5


def words_agree(shown, printed, slack):
    if shown == printed:
        return True
    if not (NUMBER.match(shown) and NUMBER.match(printed)):
        return False
    a, b = float(shown), float(printed)
    return abs(a - b) <= max(slack, 1e-3 * max(abs(a), abs(b)))


def lines_agree(shown, printed, slack=0):
    a, b = shown.split(), printed.split()
    if a[:1] == ["time"] == b[:1]:
        return True
    return len(a) == len(b) and all(words_agree(*pair, slack) for pair in zip(a, b))


def check_output(shown, printed):
    """The shown lines must stand in the printed ones, next to each other."""
    wanted = shown.splitlines()
    lines = printed.splitlines()
    for start in range(len(lines) - len(wanted) + 1):
        if all(map(lines_agree, wanted, lines[start:])):
            return
    raise SystemExit(f"shown:\n{shown}\nprinted:\n{printed}")


def check_tables(printed, readme):
    """A table that a command prints must stand in the README as it is."""
    for line in printed.splitlines():
        if line.startswith("|") and not any(
                lines_agree(shown, line, FEW_CASES) for shown in readme.splitlines()):
            raise SystemExit(f"README lacks the row that its command prints:\n{line}")


def run_program(source, root, build, compiler, folder):
    file = Path(folder, "shown.cpp")
    file.write_text(source)
    program = Path(folder, "shown")
    library = build / "src"
    run([compiler, "-std=c++17", "-Wall", "-Wextra", "-Werror", f"-I{root / 'include'}", str(file),
         f"-L{library}", "-ltrunnion", f"-Wl,-rpath,{library}", "-o", str(program)], root)
    return run([str(program)], root)


def check_samples(root, build):
    with tempfile.TemporaryDirectory() as folder:
        samples = Path(folder, "samples")
        shutil.copytree(root / "samples", samples)
        path = f"{build / 'host'}:{os.environ['PATH']}"
        commands = [content for language, content in blocks((samples / "README.md").read_text())
                    if language == "sh"]
        for content in commands:
            run(["bash", "-euo", "pipefail", "-c", content], samples, env={**os.environ, "PATH": path})
    print(f"samples/README: {len(commands)} sh")


def check_paths(name, text, root):
    for path in re.findall(r"`((?:scripts|include|src|host|samples|dialects|docs|tests)/[\w/.-]*)",
                           text):
        if not os.path.exists(root / path):
            raise SystemExit(f"{name} names {path}, which does not exist")


def check_pages(root):
    for page in sorted((root / "docs").glob("*.md")):
        text = page.read_text()
        commands = [content for language, content in blocks(text) if language == "sh"]
        for content in commands:
            run(["bash", "-euo", "pipefail", "-c", content], root)
        check_paths(page.name, text, root)
        print(f"docs/{page.name}: {len(commands)} sh")


def main():
    root, build, compiler = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve(), sys.argv[3]
    counts = {}
    source = ""
    printed = ""
    readme = (root / "README.md").read_text()
    with tempfile.TemporaryDirectory() as folder:
        for language, content in blocks(readme):
            counts[language] = counts.get(language, 0) + 1
            if language == "sh":
                printed = run(["bash", "-euo", "pipefail", "-c", content], root)
                check_tables(printed, readme)
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
    check_paths("README", readme, root)
    check_pages(root)
    check_samples(root, build)
    print("README: " + ", ".join(f"{n} {language}" for language, n in sorted(counts.items())))


main()
