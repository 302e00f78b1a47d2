"""Headers at the cost of the header: a headers-only read of a LAS 2.0 file
takes the first and the last data row and passes over the rows between; the
document shows no values, and the index's ends as `index_range`."""
from pathlib import Path

import numpy as np
import pandas as pd
import pytest

import quarl

SAMPLES = Path(__file__).resolve().parents[2] / "examples" / "data"
HEAD = ("~V\nVERS. 2.0 :\nWRAP. NO :\n~W\nSTRT.M 5 : not where the data starts\n"
        "STOP.M 9 :\nSTEP.M 1 :\nNULL. -999.25 :\n~C\nDEPT.M :\nGR.API : gamma\n~A\n")


def rows_file(path, depths):
    frame = pd.DataFrame({"GR": np.arange(len(depths), dtype=float)},
                         index=pd.Index(np.asarray(depths, dtype=float), name="DEPT"))
    quarl.write(path, quarl.from_df(frame, units={"DEPT": "M"}))
    return path


def test_a_headers_only_read_shows_the_curves_and_the_index_ends(tmp_path):
    path = rows_file(tmp_path / "a.las", 1000.0 + 0.25 * np.arange(5000))
    full = quarl.read(path)
    head = quarl.read(path, headers_only=True)
    assert head.keys == full.keys and head.curves.GR.unit == full.curves.GR.unit
    assert head.index_range == full.index_range == (1000.0, 2249.75)
    assert head["GR"].size == 0 and head.index.size == 0 and head.data.shape == (0, 2)
    assert head.df().empty and list(head.df().columns) == ["GR"]
    assert [p.value for p in head.well] == [p.value for p in full.well]
    from_bytes = quarl.read(path.read_bytes(), headers_only=True, strict=True)
    assert from_bytes.index_range == (1000.0, 2249.75) and from_bytes.data_section.curve_count == 2


@pytest.mark.parametrize("rows, ends", [
    ("1 10\n2 11\n3 12\n", (1.0, 3.0)),
    ("1 10\n", (1.0, 1.0)),  # one row: first and last are one
    ("1 10\n2 11\n3 12\n\n# a comment behind the rows\n", (1.0, 3.0)),
    ("1 10 5\n2 11\n3 12 7\n", (1.0, 3.0)),  # long rows: the index still counts
    ("# no rows\n", None),
    ("x 10\n2 11\nz 12\n", None),  # an index that is no number is not guessed
    ("1,10\n2 11\n3 12\n", None),  # nor one read in part
])
def test_index_range_of_a_headers_only_read(rows, ends):
    for strict in (True, False):
        las = quarl.read(HEAD + rows, headers_only=True, strict=strict)
        assert las.index_range == ends and las.data_section.curve_values(0).size == 0


def test_files_whose_ends_cannot_be_taken_keep_the_headers_only_answer():
    las3 = quarl.read(SAMPLES / "sample_las30.las", headers_only=True)
    assert las3.index_range is None and las3.keys == quarl.read(SAMPLES / "sample_las30.las").keys
    # A section behind ~A: the rows are passed over as before.
    behind = quarl.read(HEAD + "1 10\n2 11\n~O\nsomething\n", headers_only=True)
    assert behind.index_range is None and behind.keys == ["DEPT", "GR"]
    # A full read has the range from its data, also after the data changed.
    las = quarl.read(HEAD + "1 10\n2 11\n")
    las.set_data(pd.DataFrame({"GR": [1.0]}, index=pd.Index([7.5], name="DEPT")))
    assert las.index_range == (7.5, 7.5)


def test_the_header_table_has_the_data_ends(tmp_path):
    paths = [rows_file(tmp_path / "a.las", [100.0, 100.5, 101.0]), SAMPLES / "sample_las30.las",
             tmp_path / "missing.las"]
    table = quarl.headers(paths)
    assert list(table.columns) == quarl.files.HEADER_COLUMNS
    assert (table["first"][0], table["last"][0]) == (100.0, 101.0)
    assert float(table["STRT"][0]) == 100.0  # the writer took STRT from the data
    assert pd.isna(table["first"][1]) and pd.isna(table["last"][2])
    assert table["result"][2] == "LASFILE_IO_FAILED"
