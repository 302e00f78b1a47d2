"""Python writes what it read: by default the writer changes what the version
cannot hold, each change a RepairWarning and a Repair in the returned list;
strict=True refuses as the writer always did."""
import os
import pickle
import warnings
from pathlib import Path

import pytest

import quarl

B41 = """~VERSION INFORMATION
 VERS.                 2.0 : CWLS LOG ASCII STANDARD - VERSION 2.0
 WRAP.                  NO : ONE LINE PER DEPTH STEP
~WELL INFORMATION
 STRT.M             100.0 : START DEPTH
 STOP.M             101.0 : STOP DEPTH
 STEP.M               0.5 : STEP
 NULL.            -999.25 : NULL VALUE
 WELL.               B-41 : WELL
 LOC .  44'10'02; N LAT|60'06'32; W LO : LOCATION
~CURVE INFORMATION
 DEPT.M   : DEPTH
 DEPT.FT  : DEPTH IN FEET
 GR  .API : GAMMA
~A
100.0 328.08 50
100.5 329.72 51
101.0 331.36 52
"""


def test_a_document_the_version_cannot_hold_is_written_with_a_warning_per_change(tmp_path):
    las = quarl.read(B41)
    with pytest.warns(quarl.RepairWarning) as caught:
        repairs = quarl.write(tmp_path / "b41.las", las)
    assert [str(w.message) for w in caught] == [r.text for r in repairs]
    assert all(w.filename == __file__ for w in caught)  # attributed to the caller
    (value,) = repairs  # the second DEPT is no change: the version holds it
    assert (value.kind, value.mnemonic, value.old, value.new) == (
        "LASREPAIR_VALUE", "LOC", "44'10'02; N LAT|60'06'32; W LO", "44'10'02; N LAT/60'06'32; W LO")
    assert value.section.upper() == "WELL"
    warning = caught[0].message
    assert isinstance(warning, UserWarning) and warning.repair == value
    assert (warning.kind, warning.section, warning.mnemonic, warning.old, warning.new) == value[:5]
    copied = pickle.loads(pickle.dumps(warning))  # as it crosses to another process
    assert copied.repair == value and str(copied) == value.text
    again = quarl.read(tmp_path / "b41.las", strict=True)
    assert again.keys == ["DEPT:1", "DEPT:2", "GR"] and again["DEPT:2"].tolist() == [328.08, 329.72, 331.36]
    assert again.well["LOC"].value.strip() == value.new
    with warnings.catch_warnings():
        warnings.simplefilter("error")  # a document with nothing to change warns of nothing
        assert quarl.write(tmp_path / "clean.las", again) == []


def test_strict_refuses_naming_section_and_mnemonic(tmp_path):
    las = quarl.read(B41)
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        with pytest.raises(quarl.LasError) as refused:
            quarl.write(tmp_path / "b41.las", las, strict=True)
        assert (refused.value.name, refused.value.section.upper(), refused.value.mnemonic) == \
            ("LASFILE_BAD_NAME", "WELL", "LOC")
        assert "mnemonic LOC" in str(refused.value) and not (tmp_path / "b41.las").exists()
        with pytest.raises(quarl.LasError):
            las.to_string(strict=True)
        with pytest.raises(quarl.LasError):
            las.write(tmp_path / "b41.las", strict=True)


def test_every_way_of_writing_repairs_alike(tmp_path):
    las = quarl.read(B41)
    with pytest.warns(quarl.RepairWarning):
        text = las.to_string()
    with pytest.warns(quarl.RepairWarning):
        data = quarl.to_bytes(las)
    with pytest.warns(quarl.RepairWarning):
        repairs = las.write(tmp_path / "m.las")
    with pytest.warns(quarl.RepairWarning), open(tmp_path / "f.las", "w") as handle:
        assert quarl.write(handle, las) == repairs
    assert "N LAT/60" in text and data.decode() == text
    assert quarl.read(tmp_path / "f.las").keys == quarl.read(tmp_path / "m.las").keys
    with warnings.catch_warnings():
        warnings.simplefilter("error", quarl.RepairWarning)  # a warning filter makes it an error
        with pytest.raises(quarl.RepairWarning):
            las.to_string()


def test_a_header_only_file_writes_and_reads_back_with_its_curves(tmp_path):
    header = quarl.read(B41.split("~A")[0].replace("|", "/").replace("DEPT.FT", "DEPF.FT"))
    with pytest.raises(quarl.LasError) as refused:
        quarl.write(tmp_path / "h.las", header, strict=True)
    assert refused.value.name == "LASFILE_MISSING_SECTION"
    with pytest.warns(quarl.RepairWarning, match="ASCII"):
        repairs = quarl.write(tmp_path / "h.las", header)
    assert [r.kind for r in repairs] == ["LASREPAIR_SECTION_NOT_WRITTEN"]
    back = quarl.read(tmp_path / "h.las", strict=True)
    assert back.keys == ["DEPT", "DEPF", "GR"] and back.curves.GR.unit == "API"
    assert back["GR"].size == 0 and float(back.well["STRT"].value) == 100.0


def test_repairs_of_a_code_page_file_are_told_in_its_letters(tmp_path):
    text = B41.replace("B-41", "Скважина|1").replace("DEPT.FT", "DEPF.FT").replace("|60", "/60")
    las = quarl.read(text.encode("cp1251"))
    assert las.encoding == "cp1251"
    with pytest.warns(quarl.RepairWarning, match="Скважина/1"):
        (repair,) = quarl.write(tmp_path / "ru.las", las)
    assert (repair.mnemonic, repair.old, repair.new) == ("WELL", "Скважина|1", "Скважина/1")
    assert "Скважина/1".encode("cp1251") in (tmp_path / "ru.las").read_bytes()


CORPUS = Path(os.environ.get("QUARL_CORPUS_DIR",
                             Path(__file__).resolve().parents[2] / "../shared/corpus"))


@pytest.mark.skipif(not CORPUS.is_dir(), reason=f"no corpus at {CORPUS}")
def test_every_corpus_file_read_is_written_in_both_versions():
    written = 0
    for path in sorted(CORPUS.glob("*.las")):
        try:
            las = quarl.read(path)
        except quarl.LasError as error:
            las = error.las
        for version in (2, 3):
            with warnings.catch_warnings(record=True) as caught:
                warnings.simplefilter("always")
                data = quarl.to_bytes(las, version)
            assert all(isinstance(w.message, quarl.RepairWarning) for w in caught), path
            back = quarl.read(data)
            assert back.las3 == (version == 3), path
            if back.keys and las.keys:  # the rows stay (the text curves may not, in LAS 2.0)
                assert len(back.index) == len(las.index), path
            written += 1
    assert written >= 200
