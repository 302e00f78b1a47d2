"""The names users of the widely used pure-Python LAS reader type: get_curve,
delete_curve, descr, las.write and las.to_csv, on the same document as the
package's own names."""
import io

import numpy as np
import pytest

import quarl

TEXT = ("~Version\nVERS. 2.0 :\nWRAP. NO :\n~Well\nSTRT.M 1 :\nSTOP.M 3 :\nSTEP.M 1 :\n"
        "NULL. -999.25 :\nWELL. A-1 : well name\n~Parameter\nBHT.DEGC 35 : bottom hole temperature\n"
        "~Curve\nDEPT.M : depth\nGR.API : gamma\nSFLU.OHMM : one\nSFLU.OHMM : two\n"
        "~ASCII\n1 10 20 30\n2 -999.25 21 31\n3 12 22 32\n")


def test_get_curve_gives_definition_and_values_without_a_copy():
    las = quarl.read(TEXT)
    gr = las.get_curve("gr")
    assert (gr.mnemonic, gr.unit, gr.descr.strip()) == ("GR", "API", "gamma")
    assert gr.description == gr.descr and gr.data.tolist() == [10, -999.25, 12]
    assert np.shares_memory(gr.data, las["GR"])
    assert las.get_curve("SFLU:2").data.tolist() == [30, 31, 32]
    assert las.get_curve(-1).mnemonic == "SFLU" and "data.shape=(3,)" in repr(gr)
    with pytest.raises(KeyError):
        las.get_curve("NOPE")
    gr.unit, gr.descr = "GAPI", "gamma ray"  # a change of the item is written
    again = quarl.read(quarl.to_bytes(las), strict=True)
    assert again.curves.GR.unit == "GAPI" and again.curves.GR.descr.strip() == "gamma ray"


def test_descr_beside_description_on_every_line():
    las = quarl.read(TEXT)
    assert las.well.WELL.descr.strip() == "well name" == las.well.WELL.description.strip()
    assert las.params.BHT.descr.strip() == "bottom hole temperature"
    las.params.BHT.descr = "at the bottom"
    assert las.params.BHT.description == "at the bottom"
    assert quarl.Param("X", "M", "1", "made here").descr == "made here"


def test_delete_curve_by_name_or_position():
    las = quarl.read(TEXT)
    las.delete_curve("SFLU:1")
    assert las.keys == ["DEPT", "GR", "SFLU"] and las["SFLU"].tolist() == [30, 31, 32]
    las.delete_curve(ix=1)
    assert las.keys == ["DEPT", "SFLU"]
    with pytest.raises(TypeError):
        las.delete_curve()
    with pytest.raises(KeyError):
        las.delete_curve("GR")
    assert quarl.read(quarl.to_bytes(las), strict=True).keys == ["DEPT", "SFLU"]


def test_las_write_is_quarl_write_in_the_version_it_was_read_in(tmp_path):
    las = quarl.read(TEXT)
    las.write(tmp_path / "two.las")
    assert (tmp_path / "two.las").read_bytes() == quarl.to_bytes(las, name=str(tmp_path / "two.las"))
    las.write(tmp_path / "three.las", version=3, delimiter=",")
    three = quarl.read(tmp_path / "three.las", strict=True)
    assert three.las3 and three.delimiter == "," and three["GR"].tolist() == [10, -999.25, 12]
    three.write(tmp_path / "again.las")  # read as LAS 3.0, written as LAS 3.0
    assert quarl.read(tmp_path / "again.las").version == "3.0"
    buffer = io.StringIO()
    las.write(buffer)
    assert "~Version" in buffer.getvalue()
    assert quarl.read(buffer.getvalue()).keys == ["DEPT", "GR", "SFLU:1", "SFLU:2"]
    with pytest.raises(ValueError):
        las.write(tmp_path / "x.las", version=4)


def test_to_csv_has_a_row_of_names_then_units():
    las = quarl.read(TEXT)
    buffer = io.StringIO()
    las.to_csv(buffer)
    lines = buffer.getvalue().splitlines()
    assert lines[0] == "DEPT,GR,SFLU:1,SFLU:2" and lines[1] == "M,API,OHMM,OHMM"
    assert lines[2].split(",") == ["1.0", "10.0", "20.0", "30.0"]
    assert lines[3].split(",")[:2] == ["2.0", ""]  # the NULL value is an empty cell
    assert len(lines) == 5
    buffer = io.StringIO()
    las.to_csv(buffer, units=False, delimiter=";")
    assert buffer.getvalue().splitlines()[:2] == ["DEPT;GR;SFLU:1;SFLU:2", "1.0;10.0;20.0;30.0"]


def test_to_csv_of_a_file_without_rows_and_to_a_path(tmp_path):
    las = quarl.read(TEXT.split("~A")[0])
    las.to_csv(tmp_path / "empty.csv")
    assert (tmp_path / "empty.csv").read_text().splitlines() == ["DEPT,GR,SFLU:1,SFLU:2",
                                                                  "M,API,OHMM,OHMM"]
    nothing = quarl.LasFile([])
    nothing.to_csv(tmp_path / "nothing.csv")
    assert (tmp_path / "nothing.csv").read_text().strip() == ""
