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


RUSSIAN = ("~Version Information\nVERS. 2.0 : Версия LAS\nWRAP. NO : Одна строка на глубину\n"
           "~Well Information\nSTRT.M 1200.0 : Начальная глубина\nSTOP.M 1201.0 : Конечная глубина\n"
           "STEP.M 0.5 : Шаг\nNULL. -999.25 : Пустое значение\nCOMP. ООО Нефтегаз : Компания\n"
           "WELL. 12-Сплошная : Скважина\nFLD . Самотлорское : Месторождение\n"
           "~Curve Information\nDEPT.M : Глубина\nGK.мкР/ч : Гамма-каротаж\nPS.мВ : ПС\n"
           "~ASCII\n1200.0 5.1 40\n1200.5 5.2 41\n1201.0 5.3 42\n")


@pytest.mark.parametrize("codec", ["cp866", "cp1251"])
def test_russian_header_in_either_cyrillic_code_page(tmp_path, codec):
    raw = RUSSIAN.encode(codec)
    las = quarl.read(raw)
    assert las.encoding == codec
    assert las.well["WELL"].value.strip() == "12-Сплошная"
    assert las.well["FLD"].descr.strip() == "Месторождение"
    assert (las.curves["GK"].unit, las.curves["PS"].descr.strip()) == ("мкР/ч", "ПС")
    path = tmp_path / "ru.las"
    path.write_bytes(raw)
    quarl.write(tmp_path / "out.las", quarl.read(path, strict=True))
    written = (tmp_path / "out.las").read_bytes()
    assert "Гамма-каротаж".encode(codec) in written  # written back in the file's code page
    again = quarl.read(written)
    assert again.encoding == codec and again.to_string() == las.to_string()


@pytest.mark.parametrize("text", [
    "12-Сплошная", "ГК", "Пласт БС10", "МПа", "дела", "ПС мВ", "Ёлка", "ГАММА-КАРОТАЖ",
    "Удельное сопротивление", "ООО Нефтегаз : Компания",
])
def test_short_cyrillic_texts_are_told_apart(text):
    assert encodings.detect(text.encode("cp866")) == "cp866"
    assert encodings.detect(text.encode("cp1251")) == "cp1251"


@pytest.mark.parametrize("text", ["Compañía", "São Paulo", "Bjørn Ødegård", "±0.5 µm", "«Ça va»",
                                  "Müller GmbH"])
def test_western_words_stay_western(text):
    assert encodings.detect(text.encode("cp1252")) == "cp1252"


def test_the_example_of_a_dos_text():
    las = quarl.read(HEAD.encode() + b"WELL. 12-\x91\xaf\xab\xae\xe8\xad\xa0\xef :\n~C\nDEPT.M :\n")
    assert las.encoding == "cp866" and las.well["WELL"].value.strip() == "12-Сплошная"
