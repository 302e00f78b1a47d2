"""Texts are proper str: UTF-8, or the code page the file's bytes point to,
and a file written again in the same code page gives its bytes back."""
import json

import pytest

import quarl
from quarl import encodings

HEAD = "~V\nVERS. 2.0 : CWLS\nWRAP. NO :\n~W\nNULL. -999.25 :\n"
WESTERN = HEAD + "LATI. 10° 25' N : Latitude\nCOMP. Société Générale : Compañía\n"
CYRILLIC = HEAD + "WELL. Скважина 12 : Название\nFLD . Самотлор : месторождение\n"
DATA = "~C\nDEPT.M : Depth°\n~A\n1.0\n2.0\n"  # the degree sign is in both code pages


@pytest.mark.parametrize("text, codec", [(WESTERN, "cp1252"), (CYRILLIC, "cp1251")])
def test_code_page_is_told_and_written_back_byte_for_byte(tmp_path, text, codec):
    raw = (text + DATA).encode(codec)
    las = quarl.read(raw)
    assert las.encoding == codec
    every = [s.name for s in las.sections] + [p.value + p.description for p in las.well.values()]
    every += [c.description for c in las.curves] + [n.text for n in las.notes]
    json.dumps(every, ensure_ascii=False).encode("utf-8")  # no lone surrogate anywhere
    first = text.splitlines()[5].split(".", 1)[1].split(" :")[0].strip()
    assert any(first in value for value in every)
    path = tmp_path / "again.las"
    path.write_bytes(raw)
    again = quarl.read(path, strict=True)
    quarl.write(tmp_path / "out.las", again, version=2)
    written = (tmp_path / "out.las").read_bytes()
    assert first.encode(codec) in written and written.decode(codec)  # the file's own code page
    assert quarl.read(tmp_path / "out.las").to_string() == again.to_string()


def test_utf8_and_an_encoding_that_overrides_the_guess():
    las = quarl.read(CYRILLIC + DATA)  # str: already text
    assert las.encoding == "utf-8" and las.well["WELL"].value.startswith("Скважина")
    raw = (CYRILLIC + DATA).encode("cp1251")
    assert quarl.read(raw, encoding="KOI8-R").encoding == "koi8-r"
    assert quarl.read(raw, encoding="utf-8").well["WELL"].value.startswith("\ufffd")
    with pytest.raises(ValueError):
        quarl.to_bytes(las, encoding="cp1252")  # Cyrillic letters are not in cp1252
    with pytest.raises(ValueError):
        encodings.table("utf-16")


@pytest.mark.parametrize("sample, codec", [(b"10\xb0 25' N", "cp1252"), (b"Soci\xe9t\xe9", "cp1252"),
                                           (b"\xd1\xea\xe2\xe0\xe6\xe8\xed\xe0 12", "cp1251"),
                                           (b"\xba The tools", "cp1252")])
def test_detection_of_the_code_page(sample, codec):
    assert encodings.detect(sample) == codec
