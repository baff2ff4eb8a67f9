"""Keeps lower folders from including higher ones, in the order that docs/architecture.md draws.

usage: check_includes.py ROOT
"""

import re
import sys
from pathlib import Path

ROOT = Path(sys.argv[1])
INCLUDE = re.compile(r'^\s*#include ([<"])([^>"]+)[>"]', re.MULTILINE)
PUBLIC = {header.name for header in (ROOT / "include").glob("*.h")}


def drawn_order():
    """{"src": ["geometry", ...], ...}, lowest first."""
    page = (ROOT / "docs" / "architecture.md").read_text()
    return {tree: [folder.strip() for folder in folders.split("<")]
            for tree, folders in re.findall(r"^(\w+): (\w+(?: < \w+)+)$", page, re.MULTILINE)}


def sources(folder):
    return sorted(path for path in folder.rglob("*") if path.suffix in {".h", ".cpp"})


def main():
    failures = []
    number = 0
    order = drawn_order()
    for tree in ("src", "host"):
        folders = order[tree]
        there = {path.name for path in (ROOT / tree).iterdir() if path.is_dir()}
        if there != set(folders):
            failures.append(f"{tree} has the folders {sorted(there)}, docs/architecture.md draws {folders}")
            continue
        for source in sources(ROOT / tree):
            number += 1
            name = source.relative_to(ROOT)
            own = folders.index(name.parts[1])
            for mark, header in INCLUDE.findall(source.read_text()):
                target = header.split("/")[0]
                if mark == '"' and "/" in header and target in folders:
                    if folders.index(target) > own:
                        failures.append(f"{name} includes {header}, of a higher folder")
                elif mark == '"' and not (tree == "src" and header in PUBLIC):
                    failures.append(f"{name} includes {header}, which has no place in {tree}")
                elif mark == "<" and header.startswith("Ik") and header not in PUBLIC:
                    failures.append(f"{name} includes {header}, which is not public")
    for source in sources(ROOT / "include"):
        number += 1
        failures += [f"{source.relative_to(ROOT)} includes {header}, which is not public"
                     for mark, header in INCLUDE.findall(source.read_text())
                     if mark == '"' and header not in PUBLIC]
    print("\n".join(failures) or f"{number} sources include nothing above them")
    return 1 if failures else 0


sys.exit(main())
