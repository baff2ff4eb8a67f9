"""Toolpaths from files and arrays."""

import numpy as np
import pytest

import trunnion
from conftest import SAMPLES
from trunnion import InputError, Operation, Toolpath

TABLE = "x,y,z,i,j,k,rapid\n1,2,3,0,0,2,1\n4,5,6,0,3,4,0\n"


def test_a_table_is_read(tmp_path):
    file = tmp_path / "path.csv"
    file.write_text(TABLE)
    path = Toolpath.read(file)
    assert path.points.tolist() == [[1, 2, 3, 0, 0, 1], [4, 5, 6, 0, 0.6, 0.8]]
    assert path.rapid.tolist() == [True, False] and path.lines.tolist() == [2, 3]
    assert path.operation.tolist() == [0, 0] and path.file == str(file)
    assert len(path) == 2 and "2 points" in repr(path)
    other = tmp_path / "path.txt"
    other.write_text(TABLE)
    assert np.array_equal(Toolpath.read(other, "csv").points, path.points)


def test_operations_are_told():
    path = Toolpath.read(SAMPLES / "toolpaths" / "dome-over-the-top.cl")
    first = path.operations[0]
    assert isinstance(first, Operation) and first.first_point == 0 and first.tool_length > 0


def test_lengths_come_out_in_the_unit(tmp_path):
    file = tmp_path / "path.cl"
    file.write_text("UNITS/MM\nGOTO/25.4,0,50.8,0,0,1\n")
    assert Toolpath.read(file).points[0, :3].tolist() == [25.4, 0, 50.8]
    assert Toolpath.read(file, length_unit="inch").points[0, :3] == pytest.approx([1, 0, 2])
    with pytest.raises(InputError, match="give mm or inch"):
        Toolpath.read(file, length_unit="m")


def test_errors_have_their_place(tmp_path):
    file = tmp_path / "path.csv"
    file.write_text(TABLE.replace("4,5,6", "4,five,6"))
    with pytest.raises(InputError) as raised:
        Toolpath.read(file)
    assert (raised.value.line, raised.value.column) == (3, 3)
    with pytest.raises(InputError, match="none of apt, csv, nc"):
        Toolpath.read(file, "xls")


def test_what_is_passed_over_is_warned_of(tmp_path):
    file = tmp_path / "path.cl"
    file.write_text("TLDATA/MILL,10\nGOTO/1,2,3,0,0,1\nGOTO/1,2,3,0,0,1\n")
    with pytest.warns(UserWarning) as caught:
        path = Toolpath.read(file)
    assert [str(one.message) for one in caught] == path.warnings


@pytest.mark.parametrize(
    "points",
    [[[1, 2, 3]], [], [[1, 2, 3, 0, 0, 0]], [[1, 2, 3, 0, np.nan, 1]], np.zeros((0, 6)), 5.0],
)
def test_arrays_that_are_no_paths_are_refused(points):
    with pytest.raises(InputError, match="points"):
        Toolpath(points)


def test_flags_are_as_many_as_points():
    with pytest.raises(InputError, match="one flag for each point"):
        Toolpath([[1, 2, 3, 0, 0, 1]], [True, False])


def test_solve_takes_nothing_else_for_a_path(trunnion_table):
    with pytest.raises(InputError, match="give a Toolpath"):
        trunnion_table.solve([1, 2, 3, 0, 0, 1])
    with pytest.raises(InputError, match="cannot be opened"):
        trunnion_table.solve("nowhere.cl")


def test_the_array_is_copied(trunnion_table):
    points = np.array([[0.0, 0, 0, 0, 0, 1]])
    path = trunnion.Toolpath(points)
    points[:] = 7
    assert path.points.tolist() == [[0, 0, 0, 0, 0, 1]]
