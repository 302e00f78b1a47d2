"""LasFile: one LAS document, its sections, its mappings and its curves as numpy
arrays and pandas frames."""
from __future__ import annotations

from typing import Dict, Iterable, List, Mapping, Optional, Sequence, Union

import numpy as np

from ._quarl import Note, Param, Section
from .errors import result_name

# Section types, as the library numbers them.
PARAMETER, DEFINITION, DATA, HEADER = 0, 1, 2, 3
_LOG_DATA_FLAG = 16
_OK, _CANCELLED = 0, 8


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
                 path: Optional[str] = None, encoding: str = "utf-8"):
        self.sections = list(sections)
        self.las3, self.wrapped, self.delimiter = las3, wrapped, delimiter
        self.notes, self.result, self.path = list(notes), result, path
        # The code page the texts were read in, and are written in by default.
        self.encoding = encoding

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

    def to_string(self, version: Optional[int] = None, delimiter: str = " ") -> str:
        """The LAS text of the document as `quarl.write` would write it, in
        LAS 2.0 or 3.0 (`version` 2 or 3; by default the version it was read
        in)."""
        from .files import to_bytes
        version = version or (3 if self.las3 else 2)
        return to_bytes(self, version, delimiter, encoding="utf-8").decode("utf-8")

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
