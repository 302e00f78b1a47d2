"""The document as pandas users expect it: every curve and line kept under a
name, attribute and key access, every data section, editing before a write."""
from pathlib import Path

import numpy as np
import pandas as pd
import pytest

import quarl

SAMPLES = Path(__file__).resolve().parents[2] / "examples" / "data"
HEAD = "~V\nVERS. 2.0 :\nWRAP. NO :\n~W\nSTRT.M 1 :\nSTOP.M 3 :\nSTEP.M 1 :\nSTEP.M 1 : again\n" \
       "NULL. -999.25 :\nWELL. A-1 : name\n"
DUPES = HEAD + "~C\nDEPT.M :\nSFLU.OHMM : one\nSFLU.OHMM : two\n. : no name\n. :\n" \
               "~A\n1 10 20 30 40\n-999.25 11 -999.25 31 41\n3 12 22 32 42\n"


def test_nothing_is_lost_duplicates_unknown_names_nulls_and_empty_sections():
    las = quarl.read(DUPES)
    assert las.keys == ["DEPT", "SFLU:1", "SFLU:2", "UNKNOWN:1", "UNKNOWN:2"] == las.keys()
    assert quarl.read(DUPES, strict=True).keys[3:] == ["UNKNOWN", "UNKNOWN:2"]
    # Written, the curves a lenient read named have no mnemonic again, as in the file.
    again = quarl.read(quarl.to_bytes(las).decode())
    assert again.keys == las.keys and again["UNKNOWN:2"].tolist() == [40, 41, 42]
    assert b"UNKNOWN" not in quarl.to_bytes(las)
    assert las["SFLU"].tolist() == las["sflu:1"].tolist() == [10, 11, 12]
    assert las["SFLU:2"].tolist() == [20, -999.25, 22]
    frame = las.df()
    assert list(frame.columns) == las.keys[1:]
    assert frame.index.tolist() == [1, -999.25, 3]  # the index keeps its values
    assert np.isnan(frame["SFLU:2"].iloc[1]) and frame["SFLU:1"].iloc[1] == 11
    assert las.well.keys()[2:4] == ["STEP:1", "STEP:2"] and las.well["STEP"].description == ""
    assert las.well["STEP:2"].description.strip() == "again"


CURVES = "~C\nDEPT.M :\nGR.API : gamma\nSP.MV :\n"
LAS3_DEFINITIONS = "~Version\nVERS. 3.0 :\nWRAP. NO :\nDLM. COMMA :\n~Well\nNULL. -999.25 :\n" \
                   "~Log_Definition\nDEPT.M : depth {F}\nGR.API : gamma {F}\nLITH. : rock {S}\n"


@pytest.mark.parametrize("text, keys, kinds", [
    (HEAD + CURVES, ["DEPT", "GR", "SP"], "fff"),  # no ~A section
    (HEAD + CURVES + "~A\n", ["DEPT", "GR", "SP"], "fff"),  # ~A without rows
    (LAS3_DEFINITIONS, ["DEPT", "GR", "LITH"], "ffO"),  # a definition section and no data
], ids=["no ~A", "~A without rows", "LAS 3.0 definitions only"])
def test_a_file_without_rows_has_its_curves_and_an_empty_frame(text, keys, kinds):
    las = quarl.read(text)
    assert las.keys == keys == las.keys() and [c.mnemonic for c in las.curves] == keys
    assert las.curves.GR.unit == "API" and "GR" in las and "NOPE" not in las
    frame = las.df()
    assert list(frame.columns) == keys[1:] and frame.index.name == keys[0] and len(frame) == 0
    assert "".join(dtype.kind for dtype in [frame.index.dtype, *frame.dtypes]) == kinds
    assert las[keys[-1]].size == 0 and las.index.dtype.kind == "f" and las.data.shape == (0, 3)
    assert "0 rows of curves ['DEPT'" in repr(las)


def test_a_header_only_file_takes_its_data_from_a_frame():
    las = quarl.read(HEAD + CURVES)
    with pytest.raises(ValueError):  # rows for one curve of three: refused, nothing changed
        las.append_curve("CALI", [8.5, 8.6])
    assert las.keys == ["DEPT", "GR", "SP"] and las.data_section is None
    del las["SP"]
    assert las.keys == ["DEPT", "GR"]
    las.set_data(pd.DataFrame({"GR": [50.0, np.nan]}, index=pd.Index([1.0, 2.0], name="DEPT")))
    again = quarl.read(quarl.to_bytes(las), strict=True)
    assert again.keys == ["DEPT", "GR"] and again.curves.GR.unit == "API"
    assert again.curves.GR.description.strip() == "gamma" and again["GR"].tolist() == [50, -999.25]


def test_mappings_take_names_attributes_and_positions():
    las = quarl.read(SAMPLES / "sample_las20.las")
    assert las.well.WELL.value == las.well["well"].value == las.well[las.well.keys().index("WELL")].value
    assert las.curves.GR.unit == las.curves["GR"].unit and las.curves[0].mnemonic.strip() == "DEPT"
    assert "STRT" in las.well and "NOPE" not in las.well and las.well.get("NOPE") is None
    with pytest.raises(AttributeError):
        las.well.NOPE
    assert las.data.shape == (len(las.index), len(las.keys))
    np.testing.assert_array_equal(las.data[:, 1], las["GR"])
    assert repr(las.well).startswith("SectionItems([") and "WELL" in repr(las.well)
    assert repr(las.notes[0] if las.notes else quarl.read(DUPES + "1 2\n").notes[0]).startswith("<Note line")
    assert repr(las.data_section).startswith("<Section ~A") and "curves" in repr(las.data_section)
    assert "rows of curves" in repr(las)


def test_every_data_section_is_a_frame():
    las = quarl.read(SAMPLES / "sample_las30.las")
    names = [s.name for s in las.data_sections]
    assert names == ["Log_Data", "Core_Data"]
    core = las.df(section="core_data")
    assert len(core) == las.data_sections[1].curve_values(0).size and core.index.name == las.keys_of(1)[0]
    pd.testing.assert_frame_equal(las.df(section=0), las.df())
    with pytest.raises(KeyError):
        las.df(section="Drilling_Data")


def test_curves_are_added_replaced_and_removed_before_a_write(tmp_path):
    las = quarl.read(SAMPLES / "sample_las20.las")
    old_gr = las["GR"]
    rows = len(las.index)
    las.append_curve("GR2", np.arange(rows, dtype=float), unit="API", descr="second gamma")
    las["GR"] = las["GR"] * 2
    del las["ILD"]
    las.well["WELL"].value = "EDITED"
    las.curves["GR2"].unit = "GAPI"
    quarl.write(tmp_path / "e.las", las)
    again = quarl.read(tmp_path / "e.las", strict=True)
    assert again.keys == las.keys and "ILD" not in again.keys
    np.testing.assert_array_equal(again["GR"], old_gr * 2)
    assert again.curves.GR2.unit == "GAPI" and again.curves.GR2.description.strip() == "second gamma"
    assert again.well.WELL.value.strip() == "EDITED"
    with pytest.raises(ValueError):
        las.append_curve("SHORT", [1.0, 2.0])


def test_data_from_a_frame_and_the_depth_range_from_the_data(tmp_path):
    las = quarl.read(SAMPLES / "sample_las20.las")
    frame = las.df().iloc[10:20].copy()
    frame["GR"] = np.nan
    las.set_data(frame)
    quarl.write(tmp_path / "cut.las", las)  # STRT and STOP no longer agree with the data
    again = quarl.read(tmp_path / "cut.las", strict=True)
    assert float(again.well.STRT.value.split()[0]) == frame.index[0]
    assert float(again.well.STOP.value.split()[0]) == frame.index[-1]
    assert again.df()["GR"].isna().all() and len(again.df()) == 10
    assert again.curves.GR.unit == las.curves.GR.unit
    feet = quarl.read(HEAD.replace("M ", "F ").replace(".M", ".F") + "~C\nDEPT.FT :\n~A\n10\n20\n")
    np.testing.assert_allclose(feet.depth_m, [3.048, 6.096])
    np.testing.assert_allclose(feet.depth_ft, [10, 20])


def _own_doc(obj, name):
    """The docstring of `obj` less the signature lines pybind11 puts first."""
    text = getattr(obj, "__doc__", None) or ""
    lines = [line for line in text.splitlines()
             if not line.strip().startswith(name + "(") and line.strip() != "Overloaded function."]
    return " ".join(lines).strip()


def _public_names():
    """Every public function and class of the package, and every public method
    and property of those classes, as (qualified name, object, own name)."""
    import importlib
    modules = ["quarl", "quarl.catalog", "quarl.errors", "quarl.encodings"]
    if importlib.util.find_spec("dask") is not None:
        modules.append("quarl.dask")
    for module_name in modules:
        module = importlib.import_module(module_name)
        names = getattr(module, "__all__", None) or [n for n in vars(module) if not n.startswith("_")]
        for name in names:
            obj = getattr(module, name)
            if not callable(obj) or not getattr(obj, "__module__", "").startswith("quarl"):
                continue
            yield f"{module_name}.{name}", obj, name
            if isinstance(obj, type):
                for member, value in vars(obj).items():
                    if member.startswith("_") or not (callable(value) or isinstance(value, property)
                                                      or type(value).__name__ == "property"):
                        continue
                    yield f"{module_name}.{name}.{member}", value, member


def test_every_public_name_has_a_docstring():
    # help(quarl.read) and the rest say what each name does: a docstring of
    # a few words at least, beyond the signature pybind11 writes itself.
    names = list(_public_names())
    assert len(names) > 100 and any(qualified == "quarl.read" for qualified, _, _ in names)
    missing = [qualified for qualified, obj, name in names if len(_own_doc(obj, name).split()) < 3]
    assert missing == []
    assert "LasError" in _own_doc(quarl.read, "read") and "strict" in _own_doc(quarl.read, "read")
