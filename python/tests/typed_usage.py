"""What a type checker sees of the public API: not run, checked by mypy (the
python_types test). Each assert_type fails the check when a public name
loses its type or returns Any; each `type: ignore` is a misuse that must stay
an error (an ignore that is no longer needed fails the check too)."""
from typing import Any, List, Optional, Tuple, Union

import numpy.typing as npt
import pandas as pd
from typing_extensions import assert_type

import quarl
import quarl.catalog
import quarl.dask


def read_and_write(path: str) -> None:
    las = quarl.read(path, strict=True, encoding="cp1252")
    assert_type(las, quarl.LasFile)
    assert_type(quarl.read(b"~V\n", headers_only=True), quarl.LasFile)
    assert_type(las.keys, quarl.CurveNames)
    assert_type(las.keys(), List[str])
    assert_type(las.keys_of("Core_Data"), quarl.CurveNames)
    assert_type(las["GR"], npt.NDArray[Any])
    assert_type(las.index, npt.NDArray[Any])
    assert_type(las.depth_m, npt.NDArray[Any])
    assert_type(las.curves, quarl.SectionItems)
    assert_type(las.curves["GR"], quarl.Param)
    assert_type(las.curves[1:], List[quarl.Param])
    assert_type(las.curves.GR.unit, str)
    assert_type(las.well.get("NULL"), Optional[quarl.Param])
    assert_type(las.params.items()[0][0], str)
    assert_type(las.data_sections, List[quarl.Section])
    assert_type(las.data_section, Optional[quarl.Section])
    assert_type(las.notes, List[quarl.Note])
    assert_type(las.null, Optional[float])
    assert_type(las.version, str)
    assert_type(las.to_string(version=3), str)
    assert_type(las.get_curve("GR"), quarl.CurveItem)
    assert_type(las.get_curve("GR").data, npt.NDArray[Any])
    assert_type(las.get_curve(0).descr, str)
    assert_type(las.well["WELL"].descr, str)
    las.delete_curve("GR")
    las.delete_curve(ix=1)
    las.to_csv("out.csv", units=False)
    las.write("out.las", version=3)
    las.append_curve("GR2", [1.0, 2.0], unit="API", descr="second gamma")
    las["GR3"] = [1.0, 2.0]
    del las["GR3"]
    assert_type(quarl.to_bytes(las, 3, "\t"), bytes)
    quarl.write("out.las", las, version=3, encoding="utf-8")
    repairs = quarl.write("out.las", las, strict=False)
    assert_type(repairs, List[quarl.Repair])
    assert_type(repairs[0].kind, str)
    assert_type(las.write("out.las", strict=True), List[quarl.Repair])
    assert_type(las.to_string(strict=True), str)
    assert_type(quarl.RepairWarning(repairs[0]).mnemonic, str)
    assert_type(las.index_range, Optional[Tuple[float, float]])
    with open("out.las", "w") as text:
        quarl.write(text, las)
    quarl.write(las, "out.las")  # type: ignore[arg-type]
    las.append_curve(["GR"], [1.0])  # type: ignore[arg-type]


def errors_and_many_files(paths: List[str]) -> None:
    for item in quarl.read_many(paths, workers=2, headers_only=True):
        assert_type(item, Union[quarl.LasFile, quarl.LasError])
    try:
        quarl.read(paths[0])
    except quarl.LasError as error:
        assert_type(error.code, int)
        assert_type(error.line, Optional[int])
        assert_type(error.las, Optional[quarl.LasFile])
    assert_type(quarl.result_name(0), str)
    section = quarl.Section("ASCII", quarl.DATA, "Curve")
    section.add_numbers(quarl.Param("DEPT", "M"), [1.0, 2.0])
    assert_type(quarl.LasFile([section]).curves_of(0), quarl.SectionItems)


def catalog(roots: List[str]) -> None:
    summary = quarl.catalog.scan(roots, "archive.sqlite", threads=2)
    assert_type(summary, quarl.catalog.ScanSummary)
    assert_type(summary["read"], int)
    assert_type(summary["seconds"], float)
    summary["skipped"]  # type: ignore[typeddict-item]
    assert_type(quarl.dask.scan_catalog("s3://logs/", "archive.sqlite"), quarl.catalog.ScanSummary)
    assert_type(quarl.catalog.query("archive.sqlite", curves="GR", depth=(1000, 1500)), pd.DataFrame)
    assert_type(quarl.catalog.problems("archive.sqlite").note_kinds, pd.DataFrame)
    quarl.catalog.query("archive.sqlite", depth=1000)  # type: ignore[arg-type]
