"""Runs what the documents show: the README, the pages of docs/ and docs/guide/, CONTRIBUTING, and
samples/README.md, this in a copy of its folder.

usage: check_documents.py ROOT BUILD CXX [PAGE...]

ROOT is the checkout, BUILD a build of it with tests, CXX the compiler. Without PAGE, all of them. Fenced
blocks are taken in order: `sh` is run in ROOT, where `trunnion` is the program of BUILD; `toml` is given
to the program; `cpp` blocks make up one program, `python` blocks one session with the module of BUILD. A block whose first line is a comment with a path in
build/ is saved there instead, and blocks of its language behind it are added to it; a command must name
the file. A `text` block behind any of these must stand in what it prints, and a table that a command prints must
stand on the page. Numbers may differ in the fourth digit, in tables by a few cases, times altogether.
Links must lead to files, and paths that are named must exist.
"""

import os
import re
import shutil
import subprocess
import sys
import tempfile
import time
from pathlib import Path

NUMBER = re.compile(r"[-+]?\d+(?:\.\d+)?(?:e[-+]?\d+)?$")
SAVED = re.compile(r"(?:#|//) (build/\S+)\n")
NAMED = re.compile(r"`((?:scripts|include|src|host|python|samples|dialects|docs|tests|examples|bench|cmake|packaging)"
                   r"/[\w/.-]*)")
LINK = re.compile(r"\]\(([^)#]+)(?:#[^)]*)?\)")
FEW_CASES = 5


def blocks(text):
    """The fenced blocks as (language, content)."""
    return re.findall(r"^```(\w+)\n(.*?)^```$", text, re.DOTALL | re.MULTILINE)


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
    return len(a) == len(b) and all(words_agree(*pair, slack) or are_seconds(a, b, at)
                                    for at, pair in enumerate(zip(a, b)))


def are_seconds(a, b, at):
    return all(NUMBER.match(words[at]) and words[at + 1:at + 2] in (["s"], ["s:"], ["s,"]) for words in (a, b))


class Page:
    """One document, and what its blocks have done so far."""

    def __init__(self, file, root, build, compiler):
        self.file = file
        self.name = str(file.relative_to(root))
        self.text = file.read_text()
        self.root = root  # where commands run
        self.checkout = root
        self.build = build
        self.compiler = compiler
        self.printed = None  # by the last block that was run
        self.saved = {}  # path of the file to which a language's blocks are added
        self.source = ""
        self.session = ""  # what Python has been told
        self.env = {**os.environ, "PATH": f"{build / 'host'}:{os.environ['PATH']}",
                    "PYTHONPATH": str(build / "python"),
                    "OMPI_ALLOW_RUN_AS_ROOT": "1", "OMPI_ALLOW_RUN_AS_ROOT_CONFIRM": "1"}  # shown once

    def fail(self, sentence):
        raise SystemExit(f"{self.name}: {sentence}")

    def run(self, command):
        done = subprocess.run(command, cwd=self.root, capture_output=True, text=True, env=self.env)
        if done.returncode != 0:
            self.fail(f"exit {done.returncode}: {command}\n{done.stdout}{done.stderr}")
        return done.stdout

    def check(self, folder):
        start = time.monotonic()
        counts = {}
        for language, content in blocks(self.text):
            counts[language] = counts.get(language, 0) + 1
            if language == "text":
                self.check_output(content)
            elif not self.save(language, content):
                runner = getattr(self, f"run_{language}", None)
                if runner is None:
                    self.fail(f"no rule for a block of {language}")
                runner(content, folder)
        if self.source:
            self.fail("the program is not complete")
        self.check_saved()
        self.check_places()
        shown = ", ".join(f"{n} {language}" for language, n in sorted(counts.items()))
        print(f"{self.name}: {shown or 'nothing to run'}, {time.monotonic() - start:.1f} s", flush=True)

    def save(self, language, content):
        match = SAVED.match(content)
        if match:
            self.saved[language] = match[1]
            place = self.root / match[1]
            place.parent.mkdir(parents=True, exist_ok=True)
            place.write_text(content)
        elif language in self.saved:
            with open(self.root / self.saved[language], "a") as file:
                file.write("\n" + content)
        return language in self.saved

    def run_sh(self, content, _folder):
        self.printed = self.run(["bash", "-euo", "pipefail", "-c", content])
        for line in self.printed.splitlines():
            if line.startswith("|") and not any(
                    lines_agree(shown, line, FEW_CASES) for shown in self.text.splitlines()):
                self.fail(f"the page lacks the row that its command prints:\n{line}")

    def run_toml(self, content, folder):
        machine = Path(folder, "shown.toml")
        machine.write_text(content)
        self.printed = self.run(["trunnion", "pose", str(machine)])

    def run_cpp(self, content, folder):
        self.source += content
        if not self.source.rstrip().endswith("\n}"):
            return
        file = Path(folder, "shown.cpp")
        file.write_text(self.source)
        self.source = ""
        program = Path(folder, "shown")
        library = self.build / "src"
        self.run([self.compiler, "-std=c++17", "-Wall", "-Wextra", "-Werror",
                  f"-I{self.root / 'include'}", str(file), f"-L{library}", "-ltrunnion",
                  f"-Wl,-rpath,{library}", "-o", str(program)])
        self.printed = self.run([str(program)])

    def run_python(self, content, _folder):
        self.session += content
        self.printed = self.run(["/usr/bin/python3", "-c", self.session])

    def check_output(self, shown):
        """The shown lines must stand in the printed ones, next to each other."""
        if self.printed is None:
            return  # nothing has been run on this page
        wanted = shown.splitlines()
        lines = self.printed.splitlines()
        for start in range(len(lines) - len(wanted) + 1):
            if all(map(lines_agree, wanted, lines[start:])):
                return
        self.fail(f"shown:\n{shown}\nprinted:\n{self.printed}")

    def check_saved(self):
        """Each saved file is there for a command."""
        commands = "".join(content for language, content in blocks(self.text) if language == "sh")
        for match in SAVED.finditer("\n".join(content for _, content in blocks(self.text))):
            if Path(match[1]).name not in commands:
                self.fail(f"no command takes {match[1]}")

    def check_places(self):
        for path in NAMED.findall(self.text):
            if not (self.checkout / path).exists():
                self.fail(f"names {path}, which does not exist")
        for link in LINK.findall(self.text):
            if "://" not in link and not (self.file.parent / link).exists():
                self.fail(f"links to {link}, which does not exist")


def check_samples(root, build, compiler):
    with tempfile.TemporaryDirectory() as folder:
        copy = Path(folder, "samples")
        shutil.copytree(root / "samples", copy)
        page = Page(copy / "README.md", copy, build, compiler)
        page.name = "samples/README.md"
        page.checkout = root
        page.check(folder)


def main():
    root, build, compiler = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve(), sys.argv[3]
    samples = root / "samples" / "README.md"
    pages = [Path(page).resolve() for page in sys.argv[4:]]
    if not pages:
        pages = [root / "README.md", *sorted(root.glob("docs/*.md")),
                 *sorted(root.glob("docs/guide/*.md")), *sorted(root.glob("CONTRIBUTING.md")), samples]
    for page in pages:
        if page == samples:
            check_samples(root, build, compiler)
        else:
            with tempfile.TemporaryDirectory() as folder:
                Page(page, root, build, compiler).check(folder)


main()
