"""Facts that the widely used pure-Python LAS reader's own tests assert about
its example files, checked against quarl on the same files of the shared
corpus. Where quarl answers differently on purpose the case says so, and
docs/PYTHON.md lists the differences with their reasons."""
import os
from pathlib import Path

import numpy as np
import pytest

import quarl

CORPUS = Path(os.environ.get("QUARL_CORPUS_DIR",
                             Path(__file__).resolve().parents[2] / "../shared/corpus"))
pytestmark = pytest.mark.skipif(not CORPUS.is_dir(), reason=f"no corpus at {CORPUS}")
CURVES8 = ["DEPT", "DT", "RHOB", "NPHI", "SFLU", "SFLA", "ILM", "ILD"]


def read(name, **options):
    return quarl.read(CORPUS / name, **options)


@pytest.mark.parametrize("name, keys", [
    ("mnemonic_duplicate.las", CURVES8[:4] + ["SFLU:1", "SFLU:2", "ILM", "ILD"]),
    # Numbered from the first on, as the lenient read names them.
    ("mnemonic_missing.las", CURVES8[:4] + ["UNKNOWN:1"] + CURVES8[5:]),
    ("mnemonic_missing_multiple.las", CURVES8[:4] + ["UNKNOWN:1", "UNKNOWN:2", "ILM", "ILD"]),
    ("sample_issue105_a.las", ["DEPT", "RHO:1", "RHO:2", "RHO:3", "PHI"]),
    ("sample_issue105_b.las", ["DEPT", "UNKNOWN:1", "UNKNOWN:2", "UNKNOWN:3", "PHI"]),
    ("sample_issue105_c.las", ["DEPT", "GR:1", "GR:2"] + [f"GR[{i}]" for i in range(6)]),
    ("sparse_curves.las", CURVES8),
    # The file's case is kept; duplicates are found ignoring it.
    ("mnemonic_case.las", ["Dept", "Sflu:1", "NPHI", "SFLU:2", "SFLU:3", "sflu:4", "SfLu:5"]),
    pytest.param("mnemonic_leading_period.las", CURVES8, marks=pytest.mark.xfail(
        strict=True, reason="a period in front of a mnemonic leaves it empty (read as UNKNOWN:1)")),
])
def test_curve_names(name, keys):
    las = read(name)
    assert las.keys == keys == list(las.df().reset_index().columns)


@pytest.mark.parametrize("name, mnemonic, value", [
    ("2.0_sample_2.0_inf_uwi.las", "UWI", "300E074350061450"),
    ("1.2_sample_inf_uwi_leading_zero.las", "UWI", "05001095820000"),
    ("1.2_sample_inf_api_leading_zero.las", "API", "05001095820000"),
    ("2.0_sample_2.0_inf_uwi_leading_zero.las", "UWI", "05001095820000"),
    ("2.0_sample_2.0_inf_api_leading_zero.las", "API", "05001095820000"),
    ("UWI_API_leading_zero.las", "UWI", "05123370660000"),
])
def test_well_values_keep_their_text(name, mnemonic, value):
    # Values stay text, so leading zeros and long numbers are kept as written.
    assert read(name).well[mnemonic].value.strip() == value


def test_header_facts():
    assert read("barebones.las")["DEPT"][1] == 201
    assert "NULL" not in read("missing_null.las").well
    assert "VERS" not in [p.mnemonic.strip() for p in read("missing_vers.las").sections[0].params]
    assert len(read("sample_TVD.las").well) == 12
    assert read("blank_line.las").curves[0].mnemonic.strip() == "DEPT"
    assert read("missing_a_section.las").data.size == 0
    # Units are kept as the file writes them; square brackets are not taken away.
    assert read("sample_bracketed_units.las").curves[0].unit == "[M]"
    # Every mnemonic of a file without sections is still a curve.
    assert len(read("barebones2.las").keys) == 8


@pytest.mark.parametrize("name, count, last", [
    ("header_only.las", 21, "WPHI_FIT[9]"),  # ~Curve and no ~A section
    ("3.0_sample_3.0.las", 15, "NMR[5]"),  # LAS 3.0 Curve section and no data section
])
def test_header_only_files_list_their_curves_in_an_empty_frame(name, count, last):
    las = read(name)
    assert len(las.keys()) == count and las.keys[0] == "DEPT" and las.keys[-1] == last
    frame = las.df()
    assert list(frame.columns) == las.keys[1:] and frame.index.name == "DEPT" and frame.empty
    assert quarl.headers([CORPUS / name])["curves"][0] == las.keys  # the header table too


def test_text_in_data_and_depth_units():
    las = read("data_characters.las")
    assert (las["TIME"][0], las["DATE"][0]) == ("00:00:00", "01-Jan-20")
    assert las.df().index.dtype == object and las.df()["DATE"].dtype == object
    metres = read("autodepthindex_M.las")
    np.testing.assert_allclose(metres.depth_ft, metres.index / 0.3048)
    feet = read("autodepthindex_FT.las")
    np.testing.assert_allclose(feet.depth_ft, feet.index)


def test_null_values():
    las = read("null_policy_-999.25.las")
    assert np.isnan(las.df()["DT"].iloc[0])  # NaN in the frame,
    assert las["DT"][0] == -999.25  # the value itself in the array over the file's numbers
    # Only the Well section's NULL value is null: 9999 stays a number.
    assert read("null_policy_9999.las").df()["DT"].iloc[1] == 9999
    errors = read("null_policy_ERR.las")
    # A token that is no number reads as NaN with a note (0 strictly), and its neighbours are kept.
    assert np.isnan(errors["RHOB"][2]) and errors["ILD"][2] == 105.6
    assert read("null_policy_ERR.las", strict=True)["RHOB"][2] == 0
    assert any(n.kind_name == "LASNOTE_NOT_A_NUMBER" for n in errors.notes)


@pytest.mark.parametrize("name", ["encodings_utf8.las", "encodings_utf8wbom.las",
                                  "encodings_utf16lebom.las", "encodings_utf16le.las",
                                  "encodings_utf16bebom.las"])
def test_every_unicode_form_reads_the_same_curves(name):
    assert read(name).keys[2] == read("encodings_utf8.las").keys[2] == "ºᶟᵌᴬń"


def test_files_it_refuses_are_read_with_notes():
    las = read("dodgy_param_sect.las")
    assert las.keys == CURVES8 and las.notes
    with pytest.raises(quarl.LasError):
        read("dodgy_param_sect.las", strict=True)
    short = read("sample_lastcolblanked.las", strict=True)  # rows short of a value are filled
    assert short.keys == CURVES8 and "LASNOTE_SHORT_ROW" in {n.kind_name for n in short.notes}


def test_decimal_comma_in_one_token():
    assert read("comma_decimal_mark.las")["SFLU"][1] == 123.42
    assert read("comma_decimal_mark.las", strict=True)["SFLU"][1] == 123  # strictly, with a note


def test_nothing_is_lost_on_any_corpus_file():
    """Every curve and parameter line the library read is reachable from the
    Python objects, under a name of its own."""
    for path in sorted(CORPUS.glob("*.las")):
        try:
            las = quarl.read(path)
        except quarl.LasError as error:
            las = error.las
        for data in las.data_sections:
            names = las.keys_of(data)
            assert len(set(names)) == len(names) == data.curve_count, path
            frame = las.df(section=data)
            assert data.curve_count == 0 or len(frame.columns) + 1 == data.curve_count, path
        for mapping, names in ((las.well, ["Well", "W"]), (las.params, ["Parameter", "P",
                                                                       "Log_Parameter"])):
            section = next((s for n in names for s in las.sections if s.name.lower() == n.lower()),
                           None)
            assert len(mapping) == len(section.params if section else []), path
            assert len(set(mapping.keys())) == len(mapping), path
