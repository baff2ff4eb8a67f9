"""Checks that the changelog is in order: the version of VERSION on top, newest first, each with its date
and something to say, and no version of another file that says otherwise.

usage: check_changelog.py ROOT [--release]

With --release the version on top has to have its date.
"""

import datetime
import json
import re
import sys
from pathlib import Path

HEADING = re.compile(r"^## (\d+)\.(\d+)\.(\d+) \((\d{4}-\d{2}-\d{2}|not released)\)$")


def problems(root, is_release):
    version = (root / "VERSION").read_text().strip()
    if not re.fullmatch(r"\d+\.\d+\.\d+", version):
        yield f"VERSION does not hold three numbers: {version}"
        return
    parts = re.split(r"^(## .*)$", (root / "CHANGELOG.md").read_text(), flags=re.MULTILINE)
    entries = list(zip(parts[1::2], parts[2::2]))
    previous = None
    for number, (heading, text) in enumerate(entries):
        match = HEADING.match(heading)
        if not match:
            yield f"CHANGELOG.md: '{heading}' is not '## 1.2.3 (2026-01-31)' or '(not released)'"
            continue
        numbers, date = tuple(map(int, match.groups()[:3])), match.group(4)
        if previous is not None and numbers >= previous:
            yield f"CHANGELOG.md: '{heading}' stands below an older version"
        previous = numbers
        if not re.search(r"^- \S", text, re.MULTILINE):
            yield f"CHANGELOG.md: '{heading}' says nothing"
        if date == "not released":
            if number > 0 or is_release:
                yield f"CHANGELOG.md: '{heading}' lacks its date"
        else:
            datetime.date.fromisoformat(date)
    top = HEADING.match(entries[0][0]) if entries else None
    if top and ".".join(top.groups()[:3]) != version:
        yield f"VERSION says {version}, the top of CHANGELOG.md {'.'.join(top.groups()[:3])}"
    package = root / "report" / "package.json"
    if package.exists() and json.loads(package.read_text()).get("version") != version:
        yield f"VERSION says {version}, report/package.json another one"


def main():
    failures = list(problems(Path(sys.argv[1]), "--release" in sys.argv[2:]))
    print("\n".join(failures) or "the changelog is in order")
    return 1 if failures else 0


sys.exit(main())
