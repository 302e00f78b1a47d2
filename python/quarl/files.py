"""Reading and writing LAS files: one file, many files in threads, and the
header table of many files."""
from __future__ import annotations

import os
from concurrent.futures import ThreadPoolExecutor
from typing import Callable, Iterable, Iterator, List, Optional, Union

from . import _quarl
from ._quarl import Section
from .errors import LasError, result_name
from .las import _CANCELLED, _OK, DATA, LasFile

PathLike = Union[str, bytes, "os.PathLike[str]"]
Progress = Optional[Callable[[float], object]]

# The one-letter section names of LAS 2.0 and the names the writer stores.
_FULL_NAMES = {"W": "Well", "C": "Curve", "P": "Parameter", "A": "ASCII", "O": "Other"}


def _fspath(path: PathLike) -> bytes:
    return os.fsencode(path)


def _read_error(raw, path: str, las: LasFile) -> LasError:
    """The error of a failed read: its result, the line where it stopped
    (None when the file could not be opened) and what was read."""
    stopped = [note for note in raw.notes if note.kind == 0]
    why = stopped[-1].text if stopped else _quarl.result_description(raw.result)
    line = raw.line or None
    where = f" at line {line}" if line else ""
    return LasError(raw.result, f"{path}: {result_name(raw.result)}{where}: {why}",
                    path=path, line=line, las=las)


def _read(path: PathLike, strict: bool, headers_only: bool, progress: Progress,
          cancel) -> LasFile:
    raw = _quarl.read(_fspath(path), not strict, headers_only, progress, cancel)
    name = os.fsdecode(path)
    las = LasFile(raw.sections, las3=raw.las3, wrapped=raw.wrapped, delimiter=raw.delimiter,
                  notes=raw.notes, result=raw.result, path=name)
    if raw.result != _OK:
        raise _read_error(raw, name, las)
    return las


def read(path: PathLike, *, strict: bool = False, headers_only: bool = False,
         progress: Progress = None) -> LasFile:
    """Reads a LAS file. The GIL is released while the library reads;
    `progress(percent)` is called as the whole percent advances, and an
    exception it raises (or Ctrl-C) stops the read and is raised here.
    `strict=True` keeps every rule of the format, the default relaxes the
    ones real files break and leaves notes. `headers_only` keeps the curve
    definitions without values. Raises LasError when the read fails."""
    return _read(path, strict, headers_only, progress, None)


def _writable(las: LasFile, las3: bool) -> List[Section]:
    """The sections to hand to the writer: all but the Version section, which
    the writer makes itself; for LAS 2.0 a data section's link names its
    definition section the way the writer will store it."""
    out = []
    for section in las.sections:
        if section.name.lower() in ("version", "v"):
            continue
        if not las3 and section.type == DATA and len(section.association) == 1:
            section = section.copy()
            section.association = _FULL_NAMES.get(section.association.upper(),
                                                  section.association)
        out.append(section)
    return out


def write(path: PathLike, las: LasFile, version: int = 2, delimiter: str = " ",
          progress: Progress = None) -> None:
    """Writes `las` as LAS 2.0 or 3.0 (`version` 2 or 3) with the given data
    delimiter (" ", "\\t" or ","; LAS 2.0 only " "). The writer checks,
    completes and orders the sections; a refusal raises LasError with its
    record. The file is replaced only once it is whole."""
    if version not in (2, 3):
        raise ValueError("version must be 2 or 3")
    if len(delimiter) != 1:
        raise ValueError("delimiter must be one character")
    record = _quarl.write(_fspath(path), _writable(las, version == 3), version == 3, delimiter,
                          progress)
    code = record["code"]
    if code == _CANCELLED:
        raise KeyboardInterrupt
    if code != _OK:
        raise LasError(code, _describe_write(code, record), path=os.fsdecode(path),
                       section=record["section"], mnemonic=record["mnemonic"],
                       column=record["column"], row=record["row"])


def _describe_write(code: int, record: dict) -> str:
    text = f"write refused: {result_name(code)} ({_quarl.result_description(code)})"
    if record["section"]:
        text += f", section {record['section']}"
    if record["mnemonic"]:
        text += f", mnemonic {record['mnemonic']}"
    if record["column"] >= 0:
        text += f", column {record['column']}"
    if record["row"] >= 0:
        text += f", row {record['row']}"
    return text


def read_many(paths: Iterable[PathLike], workers: Optional[int] = None, *,
              strict: bool = False, headers_only: bool = False
              ) -> Iterator[Union[LasFile, LasError]]:
    """Reads files in `workers` threads (default: the number of CPUs) and
    yields, in the order of `paths`, each file's LasFile or its LasError.
    The reads run without the GIL. Ctrl-C stops the reads under way."""
    paths = list(paths)
    cancel = _quarl.CancelToken()

    def one(path):
        try:
            return _read(path, strict, headers_only, None, cancel)
        except LasError as error:
            return error

    with ThreadPoolExecutor(max_workers=workers or os.cpu_count() or 1) as pool:
        futures = [pool.submit(one, path) for path in paths]
        try:
            for future in futures:
                yield future.result()
        except BaseException:
            cancel.set()
            for future in futures:
                future.cancel()
            raise


HEADER_FIELDS = ["STRT", "STOP", "STEP", "NULL", "COMP", "WELL", "FLD", "UWI", "API"]


def header_row(item: Union[LasFile, LasError], path: PathLike) -> dict:
    """One row of `headers`: the path, the result, the version, the usual
    Well parameters (values as text) and the curve mnemonics."""
    las = item.las if isinstance(item, LasError) else item
    row = {"path": os.fsdecode(path), "result": result_name(item.code if isinstance(item, LasError) else las.result)}
    if las is None:
        return row
    well = las.well
    row["version"] = las.version
    for name in HEADER_FIELDS:
        row[name] = well[name].value.strip() if name in well else None
    row["curves"] = las.keys
    return row


def headers(paths: Iterable[PathLike], workers: Optional[int] = None):
    """A DataFrame of one row per file: path, result, version, STRT, STOP,
    STEP, NULL, COMP, WELL, FLD, UWI, API and the curve mnemonics, from reads
    that keep no data values."""
    import pandas as pd
    paths = list(paths)
    rows = [header_row(item, path)
            for item, path in zip(read_many(paths, workers, headers_only=True), paths)]
    return pd.DataFrame(rows, columns=["path", "result", "version", *HEADER_FIELDS, "curves"])
