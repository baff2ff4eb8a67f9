"""Tries to release copies of this checkout that are not fit for it, and one that is.

usage: check_release.py ROOT
"""

import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(sys.argv[1]).resolve()
FILES = ["VERSION", "CHANGELOG.md", "scripts/release", "tests/project/check_changelog.py"]


def git(folder, *arguments):
    subprocess.run(["git", "-c", "user.name=A", "-c", "user.email=a@b", *arguments], cwd=folder, check=True,
                   capture_output=True)


def prepared(folder):
    """A repository with what the script looks at, its version dated."""
    for name in FILES:
        target = folder / name
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(ROOT / name, target)
    log = folder / "CHANGELOG.md"
    log.write_text(log.read_text().replace("(not released)", "(2026-01-31)", 1))
    git(folder, "init", "-q", "-b", "main")
    git(folder, "add", ".")
    git(folder, "commit", "-qm", "All")


def change(name, pattern, text):
    def apply(folder):
        file = folder / name
        file.write_text(re.sub(pattern, text, file.read_text(), count=1, flags=re.MULTILINE))
        git(folder, "commit", "-qam", "Changed")
    return apply


VERSION = (ROOT / "VERSION").read_text().strip()
CASES = [
    ("as it should be", lambda folder: None, VERSION, None),
    ("another version", lambda folder: None, "9.9.9", "not 9.9.9"),
    ("no version", lambda folder: None, "", "give the version"),
    ("VERSION ahead", change("VERSION", r".+", "9.9.9"), "9.9.9", "the top of CHANGELOG.md"),
    ("no date", change("CHANGELOG.md", r"\(2026-01-31\)", "(not released)"), VERSION, "lacks its date"),
    ("no such date", change("CHANGELOG.md", r"2026-01-31", "2026-02-31"), VERSION, "day is out of range"),
    ("nothing to say", change("CHANGELOG.md", r"^(## .*)$", r"## " + VERSION + r" (2026-02-01)\n\n\1"),
     VERSION, "says nothing"),
    ("uncommitted", lambda folder: (folder / "new").write_text("x"), VERSION, "not committed"),
    ("a branch", lambda folder: git(folder, "switch", "-qc", "other"), VERSION, "on the branch main"),
    ("tagged", lambda folder: git(folder, "tag", "v" + VERSION), VERSION, "is there already"),
]


def main():
    failures = 0
    for name, spoil, version, sentence in CASES:
        with tempfile.TemporaryDirectory() as folder:
            prepared(Path(folder))
            spoil(Path(folder))
            done = subprocess.run(["bash", "scripts/release", version, "--check"], cwd=folder,
                                  capture_output=True, text=True)
            said = done.stdout + done.stderr
            if (done.returncode == 0) != (sentence is None) or (sentence or "can be released") not in said:
                print(f"{name}: exit {done.returncode}, {said}")
                failures += 1
    print(f"{len(CASES) - failures} of {len(CASES)} releases end as they should")
    return 1 if failures else 0


sys.exit(main())
