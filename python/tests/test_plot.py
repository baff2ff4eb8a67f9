"""Pictures, and what is said where nothing can draw them."""

import sys

import pytest

import trunnion
from conftest import SAMPLES

DOME = SAMPLES / "toolpaths" / "dome-over-the-top.cl"


@pytest.fixture
def drawing():
    matplotlib = pytest.importorskip("matplotlib")
    matplotlib.use("Agg")


def saved(figure, tmp_path):
    file = tmp_path / "picture.png"
    figure.savefig(file)
    return file.read_bytes()[:4] == b"\x89PNG"


def test_draws_a_toolpath(drawing, tmp_path):
    figure = trunnion.plot(trunnion.Toolpath.read(DOME))
    (axes,) = figure.axes
    drawn = sum(len(line.get_data_3d()[0]) for line in axes.lines if line.get_linestyle() == "-")
    assert drawn == 1384  # each point once
    assert saved(figure, tmp_path)


def test_draws_a_motion(drawing, tmp_path, trunnion_table):
    motion = trunnion_table.solve(DOME, degrees=True)
    figure = trunnion.plot(motion)
    *joints, path = figure.axes
    assert [axes.get_ylabel() for axes in joints] == ["X", "Y", "Z", "A [deg]", "C [deg]"]
    assert (joints[4].lines[0].get_ydata() == motion.joints[:, 4]).all()
    assert path.name == "3d" and saved(figure, tmp_path)


def test_draws_solutions(drawing, tmp_path, trunnion_table):
    solved = trunnion_table.stream().inverse([[10, 20, 30, 0.1, 0.3, 0.8], [1e4, 0, 0, 0, 0, 1]])
    figure = trunnion.plot(solved)
    assert [axes.get_ylabel() for axes in figure.axes][3:] == ["A [rad]", "C [rad]"]
    assert saved(figure, tmp_path)


def test_draws_nothing_else(drawing):
    with pytest.raises(TypeError, match="a Motion, Solutions or a Toolpath"):
        trunnion.plot([1, 2, 3])


def test_says_what_is_missing(monkeypatch):
    monkeypatch.setitem(sys.modules, "matplotlib.figure", None)
    with pytest.raises(ImportError, match="python3-matplotlib"):
        trunnion.plot(trunnion.Toolpath.read(DOME))
