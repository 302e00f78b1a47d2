"""The comparison of tools/roundtrip.py: a change is counted as a difference
unless a repair names it, and what the writer only adds is not a change."""
import importlib.util
import json
import math
import os
import sys
import warnings

import pytest

import quarl

_SCRIPT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "tools",
                       "roundtrip.py")
_spec = importlib.util.spec_from_file_location("roundtrip", _SCRIPT)
roundtrip = importlib.util.module_from_spec(_spec)
sys.modules["roundtrip"] = roundtrip  # dataclasses look their module up
_spec.loader.exec_module(roundtrip)

HEAD = "~V\nVERS. 2.0 :\nWRAP. NO :\n~W\nNULL. -999.25 :\nWELL. {well} : Name\n"
CURVES = "~C\nDEPT.M : Depth\nGR .GAPI : Gamma\n~P\nBHT.DEGC {bht} : Temperature\n"


def sections(well="A-1", bht="65", rows="1.0 10.5\n2.0 -999.25\n", extra=""):
    text = HEAD.format(well=well) + extra + CURVES.format(bht=bht) + "~A\n" + rows
    return quarl.read(text, strict=True).sections


def repair(kind, section, mnemonic="", old="", new=""):
    return roundtrip.Repair(kind, section, mnemonic, old, new)


def compare(before, after, *repairs):
    return roundtrip.first_difference(before, after, roundtrip.Exemptions.of(repairs))


def test_numbers_compare_as_the_writer_keeps_them():
    assert roundtrip.same_number(math.nan, math.nan)
    assert roundtrip.same_number(0.1 + 0.2, 0.3)  # a difference of one in 10^16
    assert not roundtrip.same_number(1.0, 1.0 + 1e-9)
    assert not roundtrip.same_number(math.nan, -999.25)
    assert not roundtrip.same_number(0.0, 1e-300)


def test_the_same_document_is_the_same_and_each_change_is_found():
    assert compare(sections(), sections()) == (None, 0)
    why, _ = compare(sections(), sections(rows="1.0 10.5\n2.0 11\n"))
    assert "'GR'" in why and "row 1" in why
    why, _ = compare(sections(), sections(rows="1.0 10.5\n"))
    assert "2 rows became 1" in why
    why, _ = compare(sections(), sections(bht="70"))
    assert "'BHT'" in why and "70" in why
    why, _ = compare(sections(), sections(well="B-2"))
    assert "'WELL'" in why


def test_a_line_the_writer_adds_is_counted_and_a_line_it_drops_is_a_difference():
    more = sections(extra="SRVC. Logger : Service company\n")
    assert compare(sections(), more) == (None, 1)
    why, _ = compare(more, sections())
    assert "'SRVC'" in why and "missing" in why


def test_names_a_lenient_read_gave_are_compared_as_the_file_had_them():
    named = quarl.read(HEAD.format(well="A") + "~C\nDEPT.M :\n.OHMM : no name\n~A\n1.0 10.5\n")
    nameless = quarl.read(HEAD.format(well="A") + "~C\nDEPT.M :\n.OHMM : no name\n~A\n1.0 10.5\n",
                          strict=True)
    assert named.sections[-1].curve_definition(1).mnemonic == "UNKNOWN:1"
    assert roundtrip.first_difference(named.sections, nameless.sections,
                                      roundtrip.Exemptions())[0] is None
    assert roundtrip.as_in_file("UNKNOWN") == "UNKNOWN" and roundtrip.as_in_file(" UNKNOWN:12") == ""


def test_a_repair_exempts_only_what_it_names():
    changed = sections(bht="70", rows="1.0 10.5\n2.0 11\n")
    # The GR values and the BHT line changed; each repair leaves the other.
    why, _ = compare(sections(), changed, repair("VALUE", "Parameter", "BHT", "65", "70"))
    assert "'GR'" in why
    why, _ = compare(sections(), changed, repair("CURVE", "ASCII", "GR"))
    assert "'BHT'" in why
    assert compare(sections(), changed, repair("VALUE", "Parameter", "BHT"),
                   repair("CURVE", "ASCII", "GR"))[0] is None
    # A repair of the same mnemonic in another section exempts nothing here.
    assert compare(sections(), changed, repair("VALUE", "Well", "BHT"),
                   repair("CURVE", "ASCII", "GR"))[0] is not None
    # A change of the delimiter changes no value.
    assert compare(sections(), changed, repair("LASREPAIR_DELIMITER", "ASCII"),
                   repair("VALUE", "Parameter", "BHT"))[0] is not None


def test_a_renamed_section_is_compared_under_its_new_name():
    las2 = quarl.read(HEAD.format(well="A") + CURVES.format(bht="65") + "~A\n1 2\n")
    las3 = quarl.read("~Version\nVERS. 3.0 :\nWRAP. NO :\nDLM . SPACE :\n~Log_Parameter\n"
                      "BHT.DEGC 65 : Temperature\n")
    before = [s for s in las2.sections if s.name.upper().startswith("P")]
    after = [s for s in las3.sections if s.name == "Log_Parameter"]
    why, _ = compare(before, after)
    assert why == "~P is missing"
    renamed = repair("LASREPAIR_SECTION_RENAMED", "Log_Parameter", "", "Parameter",
                     "Log_Parameter")
    assert compare(before, after, renamed) == (None, 0)
    # A renamed mnemonic exempts its old and new names.
    exempt = roundtrip.Exemptions.of([repair("LASREPAIR_MNEMONIC", "Curve", "G_R", "G.R", "G_R")])
    assert exempt.skips_line("CURVE", "g.r") and exempt.skips_line("CURVE", "G_R")
    assert not exempt.skips_line("WELL", "G_R")


def test_repairs_are_taken_from_warnings(monkeypatch):
    class RepairWarning(UserWarning):
        def __init__(self, kind, section, mnemonic, old, new):
            super().__init__(f"{section} {mnemonic}: {old} -> {new}")
            self.kind, self.section, self.mnemonic, self.old, self.new = \
                kind, section, mnemonic, old, new

    monkeypatch.setattr(quarl, "RepairWarning", RepairWarning, raising=False)
    with pytest.warns(UserWarning) as caught:
        warnings.warn(RepairWarning("UNIT", "Curve", "GR", "gapi", "GAPI"))
        warnings.warn("something else", UserWarning)
    found = [roundtrip.repair_of(w) for w in caught]
    assert found == [repair("UNIT", "Curve", "GR", "gapi", "GAPI"), None]


def test_the_script_counts_a_folder(tmp_path, capsys):
    well = HEAD.format(well="A") + "STRT.M 0 :\nSTOP.M 2.0 :\nSTEP.M 0 :\n"
    good = well + CURVES.format(bht="65") + "~A\n1.0 10.5\n2.0 11.5\n"
    (tmp_path / "good.LAS").write_text(good)
    (tmp_path / "sub").mkdir()
    (tmp_path / "sub" / "broken.las").write_bytes(b"\x00\x01 not a log")
    (tmp_path / "notes.txt").write_text(good)
    assert roundtrip.main([str(tmp_path), "--json"]) == 0
    counts = json.loads(capsys.readouterr().out)
    assert counts["files"] == 2 and len(counts["not read leniently"]) == 1
    las2 = counts["versions"][0]
    assert (las2["read leniently"], las2["written"], las2["same"]) == (1, 1, 1)
    assert las2["repairs by kind"] == {"LASREPAIR_WELL_RANGE": 1}  # STRT; a STEP of 0 stands


def test_the_counts_of_the_corpus_add_up(capsys):
    corpus = os.environ.get("QUARL_CORPUS_DIR", "")
    if not os.path.isdir(corpus):
        pytest.skip("the shared corpus is not there")
    assert roundtrip.main([corpus, "--json"]) == 0
    counts = json.loads(capsys.readouterr().out)
    unread = len(counts["not read leniently"])
    for version in counts["versions"]:
        assert version["files"] == counts["files"] == version["read leniently"] + unread
        assert version["written"] + version["refused"] == version["read leniently"]
        assert sum(version["refused by reason"].values()) == version["refused"]
        back = version["read back strictly"]
        assert back == version["written"] - sum(version["not read back by reason"].values())
        assert version["same"] + version["differing"] == back
        assert len(version["differing files"]) == version["differing"]
    # LAS 2.0 writes most of the corpus; the files it writes read back.
    assert counts["versions"][0]["written"] > counts["files"] // 2
