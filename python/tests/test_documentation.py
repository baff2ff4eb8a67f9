"""Every public name says what it is, and the type stubs say the same as the module."""

import dataclasses
import inspect
import os
import re
import subprocess
import sys
from pathlib import Path

import pytest

import trunnion

PACKAGE = Path(trunnion.__file__).parent


def public_members():
    for name in trunnion.__all__:
        thing = getattr(trunnion, name)
        if name == "__version__":
            continue
        yield name, thing
        if not inspect.isclass(thing):
            continue
        fields = {one.name for one in dataclasses.fields(thing)} if dataclasses.is_dataclass(thing) else ()
        for member in vars(thing):
            if not member.startswith("_") and member not in fields:
                yield f"{name}.{member}", getattr(thing, member)


def is_enum_value(value):
    return hasattr(type(value), "__members__")


@pytest.mark.parametrize(("name", "thing"), [pytest.param(*one, id=one[0]) for one in public_members()])
def test_every_public_name_has_a_docstring(name, thing):
    if is_enum_value(thing):
        assert thing.name == name.rsplit(".", 1)[1]
        return
    text = inspect.getdoc(thing) or ""
    first = text.split("\n\n")[0]
    assert len(first) > 4 and first.endswith((".", "]", ":"))
    assert all(len(line) <= 100 for line in text.splitlines())


def test_all_names_are_listed():
    listed = set(trunnion.__all__)
    assert listed == {name for name in vars(trunnion) if not name.startswith("_")} - {
        "annotations"
    } | {"__version__"}
    assert sorted(listed) == trunnion.__all__


def test_version_is_that_of_the_checkout():
    from conftest import ROOT

    assert trunnion.__version__ == (ROOT / "VERSION").read_text().strip()


def run_tool(*arguments):
    pytest.importorskip("mypy")
    return subprocess.run(
        [sys.executable, "-m", *arguments],
        cwd=PACKAGE.parent,
        env={**os.environ, "MYPYPATH": str(PACKAGE.parent)},
        capture_output=True,
        text=True,
        check=False,
    )


def test_package_is_typed(tmp_path):
    assert (PACKAGE / "py.typed").exists()
    checked = run_tool("mypy", "--strict", "--cache-dir", str(tmp_path), "-p", "trunnion")
    assert checked.stdout.startswith("Success"), checked.stdout


# What stubs cannot say of pybind11's classes: their metaclass, that only the module derives from
# some of them, and that a class without a constructor refuses all arguments.
UNSAYABLE = re.compile(
    r"metaclass differs$"
    r"|Ik(Node|Joint) cannot be subclassed at runtime"
    r"|(IkNode|IkJoint|Model|Path)\.__init__ is inconsistent"
    r"|_trunnion\.(MotionColumns|SolvedPoses) is not present at runtime$"
)


def test_stubs_name_what_the_module_has():
    checked = run_tool("mypy.stubtest", "trunnion._trunnion", "--concise")
    lines = checked.stdout.splitlines()
    assert any("metaclass differs" in line for line in lines), checked.stdout  # it has run
    assert [line for line in lines if not UNSAYABLE.search(line)] == []
