"""quarl.read takes a path, the contents or a file object, and gives the same
document from each; quarl.write takes a path or a file object; errors name
the source and say what the operating system said."""
import gzip
import io
import os
from pathlib import Path

import fsspec
import pytest

import quarl

SAMPLE = Path(__file__).resolve().parents[2] / "examples" / "data" / "sample_las20.las"


def test_every_kind_of_source_reads_the_same_document(tmp_path):
    raw = SAMPLE.read_bytes()
    with gzip.open(tmp_path / "s.las.gz", "wb") as packed:
        packed.write(raw)
    expected = quarl.read(SAMPLE).to_string()
    sources = [str(SAMPLE), os.fsencode(SAMPLE), SAMPLE, raw, bytearray(raw), memoryview(raw),
               raw.decode("utf-8"), io.BytesIO(raw), io.StringIO(raw.decode("utf-8"))]
    for source in sources:
        assert quarl.read(source).to_string() == expected, type(source)
    with open(SAMPLE, "rb") as binary, open(SAMPLE, encoding="utf-8") as text, \
            gzip.open(tmp_path / "s.las.gz") as unpacked, fsspec.open(f"file://{SAMPLE}") as remote:
        for handle in (binary, text, unpacked, remote):
            assert quarl.read(handle).to_string() == expected


def test_errors_name_the_source_and_the_reason(tmp_path):
    cases = [(b"~V\nnot a parameter line\n", "<bytes>"), ("~A\n", "<str>"),
             (io.BytesIO(b"~V\n~W\n garbage\n"), "<file>"),
             (str(tmp_path / "none" / "x.las"), "No such file or directory"),
             (str(tmp_path), "Is a directory")]
    for source, named in cases:
        with pytest.raises(quarl.LasError) as error:
            quarl.read(source, strict=True)
        assert named in str(error.value)
    with pytest.raises(TypeError):
        quarl.read(42)


def test_writes_to_paths_and_file_objects_give_the_same_bytes(tmp_path):
    las = quarl.read(SAMPLE)
    quarl.write(tmp_path / "a.las", las, version=2)
    on_disk = (tmp_path / "a.las").read_bytes()
    binary, text = io.BytesIO(), io.StringIO()
    binary.name = text.name = str(tmp_path / "a.las")
    quarl.write(binary, las, version=2)
    quarl.write(text, las, version=2)
    assert binary.getvalue() == on_disk and text.getvalue().encode("utf-8") == on_disk
    assert las.to_string(version=2).startswith("# ") and "~A" in las.to_string(version=2)
    las30 = quarl.read(SAMPLE.with_name("sample_las30.las"))
    assert quarl.read(las30.to_string()).las3
    with pytest.raises(quarl.LasError) as error:
        quarl.write(tmp_path / "none" / "x.las", las)
    assert "no such folder" in str(error.value)
    with pytest.raises(quarl.LasError) as error:
        quarl.write(tmp_path, las)
    assert "folder" in str(error.value)
