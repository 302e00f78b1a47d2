"""LAS 2.0 and 3.0 well logs in numpy and pandas, read and written by the
quarl C++ library.

    las = quarl.read("well.las")
    las["GR"]            # numpy array over the library's own values
    las.df()             # pandas DataFrame indexed by the first curve
    quarl.write("out.las", las, version=3)
"""
from __future__ import annotations

import os
from concurrent.futures import ThreadPoolExecutor
from typing import Callable, Dict, Iterable, Iterator, List, Mapping, Optional, Sequence, Union

import numpy as np

from . import _quarl
from ._quarl import Note, Param, Section

__all__ = [
    "LasError", "LasFile", "Note", "Param", "Section", "read", "write", "read_many", "headers",
    "from_df", "result_name", "PARAMETER", "DEFINITION", "DATA", "HEADER",
]

PathLike = Union[str, bytes, "os.PathLike[str]"]
Progress = Optional[Callable[[float], object]]

# Section types, as the library numbers them.
PARAMETER, DEFINITION, DATA, HEADER = 0, 1, 2, 3
_LOG_DATA_FLAG = 16
_OK, _CANCELLED = 0, 8
# The one-letter section names of LAS 2.0 and the names the writer stores.
_FULL_NAMES = {"W": "Well", "C": "Curve", "P": "Parameter", "A": "ASCII", "O": "Other"}


def result_name(code: int) -> str:
    """The name of a result code, such as "LASFILE_BAD_FORMAT"."""
    return _quarl.result_name(code)


class LasError(Exception):
    """A read or a write that did not succeed.

    `code` is the library's result code and `name` its name; a read gives the
    `line` where it stopped (None when unknown) and `las`, what was read up to
    there; a write gives the writer's record: `section`, `mnemonic`, `column`
    and `row` (None or -1 when the failure has none)."""

    def __init__(self, code: int, message: str, *, path=None, line=None, las=None,
                 section=None, mnemonic=None, column=-1, row=-1):
        super().__init__(message)
        self.code, self.name = code, result_name(code)
        self.path, self.line, self.las = path, line, las
        self.section, self.mnemonic, self.column, self.row = section, mnemonic, column, row


def _fspath(path: PathLike) -> bytes:
    return os.fsencode(path)


def _first(sections: Iterable[Section], names: Sequence[str]) -> Optional[Section]:
    wanted = [name.lower() for name in names]
    for name in wanted:
        for section in sections:
            if section.name.lower() == name:
                return section
    return None


class LasFile:
    """One LAS document: its sections, with the Well and Parameter sections as
    mappings and the curves of the main data section as numpy arrays."""

    def __init__(self, sections: List[Section], *, las3: bool = False, wrapped: bool = False,
                 delimiter: str = " ", notes: Sequence[Note] = (), result: int = _OK,
                 path: Optional[str] = None):
        self.sections = list(sections)
        self.las3, self.wrapped, self.delimiter = las3, wrapped, delimiter
        self.notes, self.result, self.path = list(notes), result, path

    # The document's parts.
    @property
    def version(self) -> str:
        """The VERS value of the Version section, such as "2.0"."""
        version = _first(self.sections, ["Version", "V"])
        vers = _params(version).get("VERS") if version else None
        return vers.value.strip() if vers else ("3.0" if self.las3 else "2.0")

    @property
    def well(self) -> Dict[str, Param]:
        """The Well section, by mnemonic (upper case)."""
        return _params(_first(self.sections, ["Well", "W"]))

    @property
    def params(self) -> Dict[str, Param]:
        """The Parameter section (LAS 3.0: Log_Parameter), by mnemonic."""
        return _params(_first(self.sections, ["Parameter", "P", "Log_Parameter"]))

    @property
    def data_section(self) -> Optional[Section]:
        """The main data section: ASCII, LOG or Log_Data, else the first one
        the reader marked as log data, else the first data section."""
        data = [s for s in self.sections if s.type == DATA]
        return (_first(data, ["ASCII", "A", "LOG", "Log_Data"])
                or next((s for s in data if s.flags & _LOG_DATA_FLAG), None)
                or (data[0] if data else None))

    @property
    def curves(self) -> List[Param]:
        """The definitions of the main data section's curves, in order."""
        data = self.data_section
        return [data.curve_definition(i) for i in range(data.curve_count)] if data else []

    @property
    def keys(self) -> List[str]:
        return [curve.mnemonic.strip() for curve in self.curves]

    @property
    def null(self) -> Optional[float]:
        """The NULL value of the Well section as a number, or None."""
        null = self.well.get("NULL")
        try:
            return float(null.value.split()[0]) if null else None
        except (ValueError, IndexError):
            return None

    def _column(self, key: Union[str, int]) -> int:
        if isinstance(key, (int, np.integer)):
            return int(key)
        upper = [k.upper() for k in self.keys]
        if key.upper() not in upper:
            raise KeyError(key)
        return upper.index(key.upper())

    def __getitem__(self, key: Union[str, int]) -> np.ndarray:
        """A curve of the main data section by mnemonic (any case) or
        position: a numpy array over the library's values for a numeric
        curve, an object array of str for a text curve."""
        data = self.data_section
        if data is None:
            raise KeyError(key)
        return data.curve_values(self._column(key))

    def __contains__(self, key: str) -> bool:
        return key.upper() in (k.upper() for k in self.keys)

    @property
    def index(self) -> np.ndarray:
        """The first curve, normally the depth."""
        return self[0]

    def df(self, copy: bool = False):
        """The main data section as a pandas DataFrame indexed by the first
        curve, with the NULL value as NaN. A numeric curve without NULL
        values is not copied: its column shares memory with the LasFile, as
        las[...] does; `copy=True` gives a frame of its own."""
        import pandas as pd
        data, keys = self.data_section, self.keys
        if data is None or not keys:
            return pd.DataFrame()
        null = self.null
        columns = {}
        for i, key in enumerate(keys):
            values = data.curve_values(i)
            if null is not None and values.dtype.kind == "f":
                hits = values == null
                if hits.any():
                    values = np.where(hits, np.nan, values)
            columns[key] = values
        index = pd.Index(columns.pop(keys[0]), name=keys[0], copy=copy)
        return pd.DataFrame(columns, index=index, copy=copy)

    @property
    def result_name(self) -> str:
        return result_name(self.result)

    def __repr__(self) -> str:
        return (f"<LasFile {self.path or ''} LAS {self.version}, {len(self.sections)} sections, "
                f"curves {self.keys}>")

    @classmethod
    def from_df(cls, frame, well: Optional[Mapping[str, object]] = None,
                units: Optional[Mapping[str, str]] = None,
                params: Optional[Mapping[str, object]] = None,
                descriptions: Optional[Mapping[str, str]] = None,
                null: float = -999.25) -> "LasFile":
        """A document from a DataFrame: its index becomes the first curve,
        each column a curve (NaN written as `null`). `well` and `params` map
        mnemonics to values or Params, `units` and `descriptions` the
        column names (index included) to their unit and description. The
        writer fills in STRT, STOP, STEP and the Curve section."""
        units, descriptions = dict(units or {}), dict(descriptions or {})
        data = Section("ASCII", DATA, "Curve")
        columns = [(frame.index.name or "DEPT", frame.index.to_numpy())]
        columns += [(str(name), frame[name].to_numpy()) for name in frame.columns]
        for name, values in columns:
            definition = Param(name, units.get(name, ""), "", descriptions.get(name, ""),
                               "" if values.dtype.kind in "biuf" else "{S}")
            if values.dtype.kind in "biuf":
                values = np.where(np.isnan(values.astype(float)), null, values)
                data.add_numbers(definition, values)
            else:
                data.add_texts(definition, values)
        well_section = Section("Well", HEADER)
        well_section.params = _to_params({"NULL": str(null), **dict(well or {})})
        sections = [well_section, data]
        if params:
            parameter = Section("Parameter", PARAMETER)
            parameter.params = _to_params(params)
            sections.insert(1, parameter)
        return cls(sections)


def _params(section: Optional[Section]) -> Dict[str, Param]:
    if section is None:
        return {}
    out: Dict[str, Param] = {}
    for param in section.params:
        out.setdefault(param.mnemonic.strip().upper(), param)
    return out


def _to_params(values: Mapping[str, object]) -> List[Param]:
    return [value if isinstance(value, Param) else Param(str(name), "", str(value))
            for name, value in values.items()]


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


from_df = LasFile.from_df


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
