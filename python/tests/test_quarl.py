import gc
import os
import signal
import threading
from pathlib import Path

import numpy as np
import pandas as pd
import pytest

import quarl

SAMPLES = Path(__file__).resolve().parents[2] / "examples" / "data"
CORPUS = Path(os.environ.get("QUARL_CORPUS_DIR", SAMPLES.parents[2] / "../shared/corpus"))
LAS20, LAS30 = SAMPLES / "sample_las20.las", SAMPLES / "sample_las30.las"


def big_file(path, rows, columns=10):
    depth = 1000.0 + 0.125 * np.arange(rows)
    frame = pd.DataFrame({f"C{i}": np.sin(depth * i) for i in range(1, columns)},
                         index=pd.Index(depth, name="DEPT"))
    quarl.write(path, quarl.from_df(frame, units={"DEPT": "M"}))
    return path


@pytest.mark.parametrize("sample, version, delimiter",
                         [(LAS20, 2, " "), (LAS30, 3, ","), (LAS30, 3, "\t")])
def test_round_trip_through_dataframe(tmp_path, sample, version, delimiter):
    las = quarl.read(sample, strict=True)
    frame = las.df()
    assert frame.index.name == "DEPT" and len(frame) > 0
    # The NULL value comes back as NaN, and nothing else does.
    assert (frame.isna().to_numpy() == (np.column_stack([las[k] for k in frame.columns])
                                        == las.null)).all()
    quarl.write(tmp_path / "as_read.las", las, version=version, delimiter=delimiter)
    again = quarl.read(tmp_path / "as_read.las", strict=True)
    pd.testing.assert_frame_equal(again.df(), frame)
    assert again.well["COMP"].value == las.well["COMP"].value
    units = {c.mnemonic.strip(): c.unit for c in las.curves}
    built = quarl.from_df(frame, well={"WELL": las.well["WELL"].value}, units=units)
    quarl.write(tmp_path / "from_df.las", built, version=version, delimiter=delimiter)
    rebuilt = quarl.read(tmp_path / "from_df.las", strict=True)
    pd.testing.assert_frame_equal(rebuilt.df(), frame)
    assert [c.unit for c in rebuilt.curves] == [c.unit for c in las.curves]
    assert rebuilt.well["STRT"].value.strip().startswith("1500")


def test_text_curves_and_a_code_page_come_back(tmp_path):
    frame = pd.DataFrame({"GR": [1.0, np.nan, 3.0], "LITH": ["sand", "shale", "lime"]},
                         index=pd.Index([1.0, 1.5, 2.0], name="DEPT"))
    quarl.write(tmp_path / "t.las", quarl.from_df(frame, well={"COMP": "café ÿ"}), version=3,
                encoding="cp1252", strict=True)  # strictly, the names Curve and ASCII stay
    assert b"caf\xe9 \xff" in (tmp_path / "t.las").read_bytes()
    las = quarl.read(tmp_path / "t.las", strict=True)
    pd.testing.assert_frame_equal(las.df(), frame)
    assert (las.well["COMP"].value.strip(), las.encoding) == ("café ÿ", "cp1252")
    with pytest.raises(quarl.LasError) as refused:  # LAS 2.0 has no text curves
        quarl.write(tmp_path / "t2.las", las, strict=True)
    assert (refused.value.name, refused.value.column) == ("LASFILE_BAD_VALUE", 2)
    with pytest.warns(quarl.RepairWarning, match="LITH"):  # by default the text curve is left out
        repairs = quarl.write(tmp_path / "t2.las", las)
    assert "LASREPAIR_CURVE_LEFT_OUT" in [r.kind for r in repairs]
    assert quarl.read(tmp_path / "t2.las", strict=True).keys == ["DEPT", "GR"]


def test_curves_are_views_that_keep_their_section():
    las = quarl.read(LAS20)
    gr, expected = las["gr"], las["GR"].copy()
    assert np.shares_memory(gr, las[1]) and not gr.flags.owndata
    gr[0] = 1.5
    assert las.df()["GR"].iloc[0] == 1.5  # the array is the section's own memory
    del las
    gc.collect()
    assert gr[0] == 1.5 and np.array_equal(gr[1:], expected[1:])


def test_failures_raise_with_their_record(tmp_path):
    with pytest.raises(quarl.LasError) as missing:
        quarl.read(tmp_path / "none.las", strict=True)
    assert missing.value.name == "LASFILE_IO_FAILED"
    (tmp_path / "bad.las").write_text("not a LAS file\n")
    with pytest.raises(quarl.LasError) as bad:
        quarl.read(tmp_path / "bad.las", strict=True)
    assert bad.value.name == "LASFILE_BAD_FORMAT" and "LASFILE_BAD_FORMAT" in str(bad.value)
    for strict in (False, True):  # an endless device of zeros is no text: refused at once
        with pytest.raises(quarl.LasError) as zeros:
            quarl.read("/dev/zero", strict=strict)
        assert zeros.value.name == "LASFILE_BAD_FORMAT" and zeros.value.line == 1
        assert "no text" in str(zeros.value)
    las = quarl.read(LAS20)
    with pytest.raises(quarl.LasError) as refused:
        quarl.write(tmp_path / "out.las", las, version=2, delimiter=",")
    assert refused.value.name == "LASFILE_NOT_ALLOWED_IN_VERSION"
    frame = pd.DataFrame({"GR": [1.0, 2.0]}, index=pd.Index([1.0, 2.0], name="DEPT"))
    with pytest.raises(quarl.LasError) as named:
        quarl.write(tmp_path / "out.las", quarl.from_df(frame, well={"BAD.NAME": "x"}),
                    strict=True)
    assert (named.value.name, named.value.section, named.value.mnemonic) == \
        ("LASFILE_BAD_NAME", "Well", "BAD.NAME")
    assert "mnemonic BAD.NAME" in str(named.value)
    assert not (tmp_path / "out.las").exists()


def test_lenient_by_default_with_notes_and_headers_only(tmp_path):
    for path, notes in ((LAS20, [(35, "LASNOTE_SECTION_SKIPPED")]), (LAS30, [])):
        las = quarl.read(path, strict=True)
        assert [(n.line, n.kind_name) for n in las.notes] == notes
    path = tmp_path / "no_period.las"
    path.write_text("~Version\n VERS. 2.0 : v\n WRAP. NO : w\n~Well\n STRT.M 1 : s\n"
                    " PROV :ALBERTA\n~Curve\n DEPT.M : d\n GR.API : g\n~A\n1 10\n2 20\n")
    with pytest.raises(quarl.LasError) as strict:
        quarl.read(path, strict=True)
    assert (strict.value.name, strict.value.line) == ("LASFILE_BAD_FORMAT", 6)
    assert "line 6" in str(strict.value) and strict.value.las.keys == []
    las = quarl.read(path)
    assert [(n.line, n.kind_name) for n in las.notes] == [(6, "LASNOTE_NO_PERIOD")]
    assert las["GR"].tolist() == [10.0, 20.0] and "PROV" in las.well
    heads = quarl.read(path, headers_only=True)
    assert heads.keys == ["DEPT", "GR"] and len(heads["GR"]) == 0 and heads.df().empty


@pytest.mark.skipif(not CORPUS.is_dir(), reason="the shared corpus is not there")
def test_threads_read_as_in_sequence():
    paths = sorted(CORPUS.glob("*.las"))[:40] + [CORPUS / "missing.las"]

    def outcome(item):
        if isinstance(item, quarl.LasError):
            return item.name
        return [(s.name, s.params and [p.value for p in s.params],
                 [s.curve_values(i).tolist() for i in range(s.curve_count)])
                for s in item.sections]

    one = [outcome(item) for item in quarl.read_many(paths, workers=1)]
    two = [outcome(item) for item in quarl.read_many(paths, workers=2)]
    assert one == two and one[-1] == "LASFILE_IO_FAILED"
    table = quarl.headers(paths)
    assert list(table["result"])[-1] == "LASFILE_IO_FAILED" and len(table) == len(paths)
    assert all(table["result"][:-1].eq("LASFILE_OK") == [isinstance(o, list) for o in one[:-1]])


def test_ctrl_c_cancels_a_read(tmp_path):
    path = big_file(tmp_path / "big.las", 400_000)
    seen = []
    quarl.read(path, progress=seen.append)
    assert seen == sorted(seen) and seen[-1] == 100.0 and len(seen) > 50
    started = threading.Event()
    threading.Thread(target=lambda: started.wait(5) and os.kill(os.getpid(), signal.SIGINT)).start()
    with pytest.raises(KeyboardInterrupt):
        quarl.read(path, progress=lambda percent: started.set())
    # A progress function that raises stops the read with its exception.
    with pytest.raises(ZeroDivisionError):
        quarl.read(path, progress=lambda percent: 1 / 0 if percent > 50 else None)


def test_dask_on_two_local_workers(tmp_path):
    distributed = pytest.importorskip("distributed")
    import quarl.dask
    import zipfile
    with zipfile.ZipFile(tmp_path / "archive.zip", "w") as archive:
        archive.write(LAS20, "inside.las")
    paths = [LAS20, big_file(tmp_path / "b.las", 1000), tmp_path / "missing.las",
             f"zip://inside.las::file://{tmp_path / 'archive.zip'}", f"file://{tmp_path}/gone.las"]
    with distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True,
                                  host="127.0.0.1", dashboard_address=None) as cluster, \
            distributed.Client(cluster):
        heads = quarl.dask.headers(paths, files_per_task=1).compute()
        logs = quarl.dask.curves(paths, ["GR", "C1"]).compute()
    assert list(heads["result"]) == ["LASFILE_OK", "LASFILE_OK", "LASFILE_IO_FAILED", "LASFILE_OK",
                                     "LASFILE_IO_FAILED"]
    assert heads["curves"].iloc[0][:2] == ["DEPT", "GR"]
    assert logs.groupby("path").size().to_dict() == {str(paths[0]): 400, str(paths[1]): 1000,
                                                     paths[3]: 400}
    np.testing.assert_array_equal(logs[logs.path == str(LAS20)]["GR"], quarl.read(LAS20)["GR"])


def _rows_file(rows):
    head = ("~VERSION INFORMATION\n VERS. 2.0 :\n WRAP. NO :\n~WELL INFORMATION\n NULL. -999.25 :\n"
            "~CURVE INFORMATION\n DEPT.M :\n GR.GAPI :\n~A\n")
    body = "".join("%.2f %.4f\n" % (100 + i * 0.5, (i % 37) * 1.25 - 7) for i in range(rows))
    half = body.index("\n", len(body) // 2) + 1
    return (head + body[:half] + "# a comment\n1 2 3\n" + body[half:]).encode()


def test_read_on_several_threads_reads_what_one_thread_reads():
    data = _rows_file(20000)
    one = quarl.read(data, strict=True)
    lenient = quarl.read(data)
    for threads in (0, 2, 3):
        for strict, alone in ((True, one), (False, lenient)):
            many = quarl.read(data, strict=strict, threads=threads)
            assert many.df().equals(alone.df())
            assert [(n.line, n.kind, n.text) for n in many.notes] == \
                [(n.line, n.kind, n.text) for n in alone.notes]
    assert len(one.df()) == 20001
    with pytest.raises(ValueError):
        quarl.read(data, threads=-1)
