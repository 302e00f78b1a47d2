"""Reading and writing LAS files: one file, many files in threads, and the
header table of many files."""
from __future__ import annotations

import io
import os
import sys
import warnings
from concurrent.futures import ThreadPoolExecutor
from types import FrameType
from typing import (IO, TYPE_CHECKING, Callable, Dict, Iterable, Iterator, List, Optional, Tuple,
                    Union, cast)

from . import _quarl, encodings
from ._quarl import CancelToken, ReadResult, Section
from .errors import LasError, Repair, RepairWarning, result_name
from .las import _CANCELLED, _OK, DATA, LasFile

if TYPE_CHECKING:
    import pandas as pd

    from ._quarl import WriteRecord

_IO_FAILED = 1

PathLike = Union[str, bytes, "os.PathLike[str]"]
# What read takes: a path, the file's contents as str or bytes, or a file
# object opened for reading, binary or text.
Source = Union[PathLike, bytearray, memoryview, IO[bytes], IO[str]]
# What write takes: a path, or a file object opened for writing.
Target = Union[PathLike, IO[bytes], IO[str]]
# Called with the percent done; what it raises stops the read or the write.
Progress = Optional[Callable[[float], object]]
# Bytes that the library reads in place.
Buffer = Union[bytes, bytearray, memoryview]

# The one-letter section names of LAS 2.0 and the names the writer stores.
_FULL_NAMES = {"W": "Well", "C": "Curve", "P": "Parameter", "A": "ASCII", "L": "ASCII",
               "O": "Other", "D": "Downhole"}


def _fspath(path: PathLike) -> bytes:
    return os.fsencode(path)


class _Input:
    """One source of a read: a path, or bytes in memory with the name that
    messages give them ("<bytes>", "<str>", or the file object's name), and
    the encoding the source itself fixes (a str was decoded already)."""

    def __init__(self, name: str, path: Optional[bytes] = None, data: Optional[Buffer] = None,
                 encoding: Optional[str] = None) -> None:
        self.name, self.path, self.data, self.encoding = name, path, data, encoding


# What may stand in front of the first "~" or "#" of a file: blanks and the
# byte-order marks of UTF-8, UTF-16 and UTF-32 (as bytes read one to a char).
_LEAD = "\ufeff\u00ef\u00bb\u00bf\u00ff\u00fe\x00 \t"


def _looks_like_contents(head: str) -> bool:
    return "\n" in head or "\r" in head or head.lstrip(_LEAD).startswith(("~", "#"))


def _input(source: Source) -> _Input:
    """Tells a path from contents: text with a line break, or text that starts
    with "~" or "#" (behind blanks and a byte-order mark) and names no file,
    is the contents of a file."""
    if isinstance(source, os.PathLike):
        return _Input(os.fsdecode(source), path=_fspath(source))
    if isinstance(source, str):
        if _looks_like_contents(source[:4096]) and not _is_file(source):
            return _Input("<str>", data=source.encode("utf-8"), encoding=encodings.UTF8)
        return _Input(source, path=_fspath(source))
    if isinstance(source, bytes) and not (
            _looks_like_contents(source[:4096].decode("latin-1")) and not _is_file(source)):
        return _Input(os.fsdecode(source), path=source)
    if isinstance(source, (bytes, bytearray, memoryview)):
        return _Input("<bytes>", data=source)
    if hasattr(source, "read"):
        name = getattr(source, "name", None)
        name = os.fsdecode(name) if isinstance(name, (str, bytes)) else "<file>"
        data = source.read()
        if isinstance(data, str):
            return _Input(name, data=data.encode("utf-8"), encoding=encodings.UTF8)
        return _Input(name, data=data if isinstance(data, bytes) else bytes(data))
    raise TypeError("quarl.read takes a path, the contents as str or bytes, or a file object, "
                    f"not {type(source).__name__}")


def _is_file(text: Union[str, bytes]) -> bool:
    try:
        return len(text) < 4096 and os.path.isfile(text)
    except (ValueError, OSError):
        return False


def _why_not_opened(path: bytes) -> str:
    """What the operating system says of a path that the library could not
    read: no such file, permission, a folder."""
    try:
        with open(path, "rb") as handle:
            return "the file is empty" if not handle.read(1) else "the file cannot be read"
    except OSError as error:
        return error.strerror or str(error)


def _read_error(raw: ReadResult, source: _Input, las: LasFile) -> LasError:
    """The error of a failed read: its result, the line where it stopped
    (None when the file could not be opened) and what was read."""
    stopped = [note for note in raw.notes if note.kind == 0]
    why = stopped[-1].text if stopped else _quarl.result_description(raw.result)
    line = raw.line or None
    if source.path is not None and raw.result == _IO_FAILED and not raw.sections and line is None:
        why = _why_not_opened(source.path)
    where = f" at line {line}" if line else ""
    return LasError(raw.result, f"{source.name}: {result_name(raw.result)}{where}: {why}",
                    path=source.name, line=line, las=las)


def _text_of(raw: ReadResult, source: _Input, encoding: Optional[str]) -> str:
    """Decides the code page of the read's texts and turns them into UTF-8."""
    if encoding is not None:
        chosen = encodings.normalize(encoding)
    elif source.encoding is not None or not raw.foreign:
        return source.encoding or encodings.UTF8
    else:
        chosen = encodings.detect(raw.foreign)
    if chosen != encodings.UTF8:
        _quarl.transcode(raw, encodings.table(chosen))
    return chosen


def _read(source: Source, strict: bool, headers_only: bool, progress: Progress,
          cancel: Optional[CancelToken], encoding: Optional[str] = None,
          threads: int = 1) -> LasFile:
    where = _input(source)
    raw = _quarl.read(where.path if where.path is not None else where.name.encode("utf-8"),
                      not strict, headers_only, progress, cancel, where.data, threads)
    chosen = _text_of(raw, where, encoding)
    las = LasFile(raw.sections, las3=raw.las3, wrapped=raw.wrapped, delimiter=raw.delimiter,
                  notes=raw.notes, result=raw.result, path=where.name, encoding=chosen,
                  index_ends=raw.index_ends)
    if raw.result != _OK:
        raise _read_error(raw, where, las)
    return las


def read(source: Source, *, strict: bool = False, headers_only: bool = False,
         progress: Progress = None, encoding: Optional[str] = None, threads: int = 1) -> LasFile:
    """Reads a LAS file from a path (str, bytes, os.PathLike), from its
    contents (str or bytes: text with a line break, or text that starts with
    "~" and names no file), or from a file object opened for reading, binary
    or text (an open file, io.BytesIO, gzip.open, a file of fsspec). Bytes
    are read in place by the library, without a copy.

    The GIL is released while the library reads; `progress(percent)` is
    called as the whole percent advances, and an exception it raises (or
    Ctrl-C) stops the read and is raised here. `strict=True` keeps every rule
    of the format, the default relaxes the ones real files break and leaves
    notes. `headers_only` keeps the curve definitions without values, at
    the cost of the header alone where the file allows it (a LAS 2.0 file,
    not wrapped, whose ~A is the last section: its first and last row are
    read, the rows between passed over); `las.index_range` then holds the
    index's first and last value. Texts
    are decoded as `quarl.encodings` tells (UTF-8, else the file's code
    page); `encoding` overrides it. Raises LasError when the read fails; its
    message names the source and, for a path, what the operating system said
    of it. Bytes that are no text (a NUL byte in the first 1024, as a binary
    file or /dev/zero gives) or a line longer than 256 MiB end the read at
    once with LASFILE_BAD_FORMAT.

    `threads` is how many threads cut the data rows into values: 1 (the
    default, since `read_many` and `quarl.dask` already read one file per
    thread), 0 for every core, or N. The result is the same with any number.
    Only a read without `progress` shares its rows out (see
    CLasReadOptions::threads for the rows that do); Ctrl-C then stops it
    once the read is over."""
    if threads < 0:
        raise ValueError("threads must be 0 (every core) or more")
    return _read(source, strict, headers_only, progress, None, encoding, threads)


def _invented(mnemonic: str) -> bool:
    """A name a lenient read gives a curve without one ("UNKNOWN:1"): no
    mnemonic of a file holds a colon."""
    return mnemonic.startswith("UNKNOWN:") and mnemonic[8:].isdigit()


def _without_invented_names(section: Section) -> Section:
    """The section with the curves a lenient read named "UNKNOWN:n" written
    without a mnemonic again, as the file had them (the writer refuses a colon
    in a mnemonic); the section itself when it has none."""
    params = section.params
    curves = [i for i in range(section.curve_count)
              if _invented(section.curve_definition(i).mnemonic)]
    if not curves and not any(_invented(p.mnemonic) for p in params):
        return section
    section = section.copy()
    for p in params:
        if _invented(p.mnemonic):
            p.mnemonic = ""
    section.params = params
    for i in curves:
        definition = section.curve_definition(i)
        definition.mnemonic = ""
        section.set_curve_definition(i, definition)
    return section


def _writable(las: LasFile, las3: bool, strict: bool) -> List[Section]:
    """The sections to hand to the writer: all but the Version section, which
    the writer makes itself, with what was changed through the mappings;
    for a strict write STRT, STOP and STEP taken from the data (a repairing
    writer does that itself and reports it); for LAS 2.0 a data section's
    link names its definition section the way the writer will store it."""
    out = []
    for section in las._for_writing(range_from_data=strict):
        if section.name.lower() in ("version", "v"):
            continue
        section = _without_invented_names(section)
        if not las3 and section.type == DATA and len(section.association) == 1:
            section = section.copy()
            section.association = _FULL_NAMES.get(section.association.upper(),
                                                  section.association)
        out.append(section)
    return out


def _write_record(target: bytes, las: LasFile, version: int, delimiter: str,
                  progress: Progress, encoding: Optional[str], to_text: bool,
                  strict: bool) -> Tuple[WriteRecord, List[Repair]]:
    """The writer's record of one write, and the changes it made (none when
    `strict`: the writer then refuses what the version cannot hold)."""
    if version not in (2, 3):
        raise ValueError("version must be 2 or 3")
    if len(delimiter) != 1:
        raise ValueError("delimiter must be one character")
    chosen = encodings.normalize(encoding or las.encoding)
    sections = _writable(las, version == 3, strict)
    if chosen != encodings.UTF8:
        sections = _quarl.encode(sections, encodings.table(chosen), chosen)
    record = _quarl.write(target, sections, version == 3, delimiter, progress, None, to_text,
                          not strict)
    if record["code"] == _CANCELLED:
        raise KeyboardInterrupt
    repairs = [_repair(raw, chosen) for raw in record["repairs"]]
    return record, [r for r in repairs if version == 3 or not _written_out(r)]


def _written_out(repair: Repair) -> bool:
    """A one-letter LAS 2.0 section name written out ("W" as "Well"), which
    the writer does in strict mode as well: no change of the document's."""
    return repair.kind == "LASREPAIR_SECTION_RENAMED" and \
        _FULL_NAMES.get(repair.old.upper()) == repair.new


def _repair(raw: Tuple[str, bytes, bytes, bytes, bytes, bytes], codec: str) -> Repair:
    section, mnemonic, old, new, text = (field.decode(codec, "replace") for field in raw[1:])
    return Repair(raw[0], section, mnemonic, old, new, text)


def _warn(repairs: List[Repair]) -> None:
    """Emits a RepairWarning per change, attributed to the first caller
    outside this package."""
    frame: Optional[FrameType] = sys._getframe(0)
    level = 1
    package = os.path.dirname(os.path.abspath(__file__))
    while frame is not None and os.path.dirname(os.path.abspath(frame.f_code.co_filename)) == package:
        frame, level = frame.f_back, level + 1
    for repair in repairs:
        warnings.warn(RepairWarning(repair), stacklevel=level)


def _write_error(record: WriteRecord, name: str, why: Optional[str] = None) -> LasError:
    code = record["code"]
    text = f"{name}: {_describe_write(code, record)}" + (f": {why}" if why else "")
    return LasError(code, text, path=name, section=record["section"],
                    mnemonic=record["mnemonic"], column=record["column"], row=record["row"])


def _why_not_written(path: str) -> Optional[str]:
    """What stands in the way of a file at `path`: a missing folder, a folder
    in its place, permission, a full disk; None when nothing shows."""
    folder = os.path.dirname(os.path.abspath(path))
    if not os.path.isdir(folder):
        return f"no such folder: {folder}"
    if os.path.isdir(path):
        return "a folder stands at that path"
    if not os.access(folder, os.W_OK) and not os.access(path, os.W_OK):
        return "permission denied"
    try:
        if os.statvfs(folder).f_bavail == 0:
            return "no space left on device"
    except OSError:
        pass
    return None


def to_bytes(las: LasFile, version: int = 2, delimiter: str = " ", *,
             encoding: Optional[str] = None, name: str = "", strict: bool = False) -> bytes:
    """The bytes of the LAS file that `write` would write, made in memory,
    with the same repairs and warnings; `name` stands where the file head
    names the path."""
    data, repairs = _bytes(las, version, delimiter, encoding, name, strict)
    _warn(repairs)
    return data


def _bytes(las: LasFile, version: int, delimiter: str, encoding: Optional[str], name: str,
           strict: bool) -> Tuple[bytes, List[Repair]]:
    record, repairs = _write_record(name.encode("utf-8"), las, version, delimiter, None, encoding,
                                    True, strict)
    if record["code"] != _OK:
        raise _write_error(record, name or "<bytes>")
    return record["text"], repairs


def write(target: Target, las: LasFile, version: int = 2,
          delimiter: str = " ", progress: Progress = None, *,
          encoding: Optional[str] = None, strict: bool = False) -> List[Repair]:
    """Writes `las` as LAS 2.0 or 3.0 (`version` 2 or 3) with the given data
    delimiter (" ", "\t" or ","; LAS 2.0 only " ") to a path, or to a file
    object opened for writing (binary, or text: then as str). The writer
    checks, completes and orders the sections. What the version cannot hold
    (a "|" in a LAS 2.0 value, a mnemonic twice, LAS 3.0 section names in
    LAS 2.0, a document without data rows...) is changed in the smallest
    way that lets it be written: each change is a `quarl.RepairWarning` and
    the list of changes (`quarl.Repair`) is returned. `strict=True` changes
    nothing and refuses instead. A refusal raises LasError with the writer's
    record (section, mnemonic, column, row), and a file the operating system
    refuses says why. A path is replaced only once the file is whole. Texts
    are written in `encoding`, by default the one the document was read in
    (`las.encoding`), so that a file read and written again keeps its
    bytes."""
    if hasattr(target, "write"):
        repairs = _write_to_file(cast("Union[IO[bytes], IO[str]]", target), las, version,
                                 delimiter, encoding, strict)
    else:
        repairs = _write_path(cast(PathLike, target), las, version, delimiter, progress, encoding,
                              strict)
    _warn(repairs)
    return repairs


def _write_path(target: PathLike, las: LasFile, version: int, delimiter: str,
                progress: Progress, encoding: Optional[str], strict: bool) -> List[Repair]:
    name = os.fsdecode(target)
    record, repairs = _write_record(_fspath(target), las, version, delimiter, progress, encoding,
                                    False, strict)
    if record["code"] != _OK:
        why = _why_not_written(name) if record["code"] == _IO_FAILED and not record["section"] \
            else None
        raise _write_error(record, name, why)
    return repairs


def _write_to_file(target: Union[IO[bytes], IO[str]], las: LasFile, version: int,
                   delimiter: str, encoding: Optional[str], strict: bool) -> List[Repair]:
    """Writes the file's bytes to a file object; a text one takes them as str."""
    name = getattr(target, "name", None)
    name = os.fsdecode(name) if isinstance(name, (str, bytes)) else "<file>"
    data, repairs = _bytes(las, version, delimiter, encoding, name, strict)
    if isinstance(target, io.TextIOBase):
        cast(IO[str], target).write(data.decode(encodings.normalize(encoding or las.encoding)))
    else:
        cast(IO[bytes], target).write(data)
    return repairs


def _describe_write(code: int, record: WriteRecord) -> str:
    text = f"write failed: {result_name(code)} ({_quarl.result_description(code)})"
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

    def one(path: PathLike) -> Union[LasFile, LasError]:
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


HEADER_FIELDS: List[str] = ["STRT", "STOP", "STEP", "NULL", "COMP", "WELL", "FLD", "UWI", "API"]
# The columns of the header table, in order.
HEADER_COLUMNS: List[str] = ["path", "result", "version", *HEADER_FIELDS, "curves", "first", "last"]


def header_row(item: Union[LasFile, LasError], path: PathLike) -> Dict[str, object]:
    """One row of `headers`: the path, the result, the version, the usual
    Well parameters (values as text), the curve mnemonics, and the first
    and last value of the index (`LasFile.index_range`, None when unknown)."""
    code, las = (item.code, item.las) if isinstance(item, LasError) else (item.result, item)
    row: Dict[str, object] = {"path": os.fsdecode(path), "result": result_name(code)}
    if las is None:
        return row
    well = las.well
    row["version"] = las.version
    for name in HEADER_FIELDS:
        row[name] = well[name].value.strip() if name in well else None
    row["curves"] = las.keys
    row["first"], row["last"] = las.index_range or (None, None)
    return row


def headers(paths: Iterable[PathLike], workers: Optional[int] = None) -> "pd.DataFrame":
    """A DataFrame of one row per file: path, result, version, STRT, STOP,
    STEP, NULL, COMP, WELL, FLD, UWI, API, the curve mnemonics, and the
    index's first and last value as the data has them ("first", "last";
    None when the read could not take them), from reads that keep no data
    values and, where the file allows it, pass over its rows unread."""
    import pandas as pd
    paths = list(paths)
    rows = [header_row(item, path)
            for item, path in zip(read_many(paths, workers, headers_only=True), paths)]
    return pd.DataFrame(rows, columns=HEADER_COLUMNS)
