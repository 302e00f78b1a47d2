"""LasFile: one LAS document, its sections, its mappings and its curves as numpy
arrays and pandas frames."""
from __future__ import annotations

import os
from typing import IO, TYPE_CHECKING, Any, Dict, Iterable, List, Mapping, Optional, Sequence, Tuple, Union

import numpy as np
import numpy.typing as npt

from ._quarl import Note, Param, Section
from .errors import result_name
from .items import CurveItem, SectionItems

if TYPE_CHECKING:
    import pandas as pd

    from .errors import Repair
    from .files import Progress, Target

# A curve's values: float64 for a numeric curve, object (str) for a text curve.
Array = npt.NDArray[Any]
# A data section as the curve operations take it: None for the main one, its
# name (any case), its position among the data sections, or the Section.
SectionKey = Union[None, str, int, Section]

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


class CurveNames(List[str]):
    """The curve names of a data section; callable as well, so that both
    `las.keys` and `las.keys()` give them."""

    def __call__(self) -> List[str]:
        return list(self)


def _is_numeric(format: str) -> bool:
    """Whether a curve of this format holds numbers, as a lenient read decides:
    no format, or F, I or E behind the brace (behind "A" too: "{AF}")."""
    format = format.strip()
    if not format:
        return True
    at = 2 if len(format) > 2 and format[1].lower() == "a" else 1
    return len(format) > at and format[at].lower() in "fie"


# Depth units and their length in metres.
_METRES_PER_UNIT = {"M": 1.0, "METER": 1.0, "METERS": 1.0, "METRE": 1.0, "METRES": 1.0,
                    "F": 0.3048, "FT": 0.3048, "FEET": 0.3048, "FOOT": 0.3048,
                    ".1IN": 0.00254, "0.1IN": 0.00254, "CM": 0.01, "MM": 0.001}


class LasFile:
    """One LAS document: its sections, with the Well and Parameter sections as
    mappings and the curves of its data sections as numpy arrays.

    Every data section is reachable (`data_sections`, `df(section=...)`);
    the main one (ASCII, LOG or Log_Data) is the default of every curve
    operation. Curves and parameter lines are all kept: duplicated
    mnemonics are told apart as "SFLU:1", "SFLU:2" (see `quarl.items`)."""

    def __init__(self, sections: List[Section], *, las3: bool = False, wrapped: bool = False,
                 delimiter: str = " ", notes: Sequence[Note] = (), result: int = _OK,
                 path: Optional[str] = None, encoding: str = "utf-8",
                 index_ends: Sequence[float] = ()) -> None:
        self.sections = list(sections)
        # The index's first and last value that a headers-only read found.
        self._index_ends = tuple(index_ends)
        self.las3, self.wrapped, self.delimiter = las3, wrapped, delimiter
        self.notes, self.result, self.path = list(notes), result, path
        # The code page the texts were read in, and are written in by default.
        self.encoding = encoding
        # The mappings handed out, by section: what a host changes in them
        # is what a write takes.
        self._items: Dict[int, SectionItems] = {}
        self._curve_items: Dict[int, SectionItems] = {}

    # The document's parts.
    @property
    def version(self) -> str:
        """The VERS value of the Version section, such as "2.0"."""
        version = _first(self.sections, ["Version", "V"])
        vers = version.params if version else []
        for param in vers:
            if param.mnemonic.strip().upper() == "VERS":
                return param.value.strip()
        return "3.0" if self.las3 else "2.0"

    def _items_of(self, section: Optional[Section]) -> SectionItems:
        if section is None:
            return SectionItems()
        if id(section) not in self._items:
            self._items[id(section)] = SectionItems(section.params)
        return self._items[id(section)]

    @property
    def well(self) -> SectionItems:
        """The lines of the Well section, by name or position."""
        return self._items_of(_first(self.sections, ["Well", "W"]))

    @property
    def params(self) -> SectionItems:
        """The lines of the Parameter section (LAS 3.0: Log_Parameter)."""
        return self._items_of(_first(self.sections, ["Parameter", "P", "Log_Parameter"]))

    @property
    def data_sections(self) -> List[Section]:
        """Every data section, in file order."""
        return [s for s in self.sections if s.type == DATA]

    @property
    def data_section(self) -> Optional[Section]:
        """The main data section: ASCII, LOG or Log_Data, else the first one
        the reader marked as log data, else the first data section."""
        data = self.data_sections
        return (_first(data, ["ASCII", "A", "LOG", "Log_Data"])
                or next((s for s in data if s.flags & _LOG_DATA_FLAG), None)
                or (data[0] if data else None))

    @property
    def _main_definition(self) -> Optional[Section]:
        """The curve definitions that stand for the main data section when a
        file has none (a header-only file): Curve, Log_Definition, else the
        first definition section."""
        definitions = [s for s in self.sections if s.type == DEFINITION]
        return (_first(definitions, ["Curve", "C", "Log_Definition"])
                or (definitions[0] if definitions else None))

    def _data(self, section: SectionKey = None) -> Optional[Section]:
        """A data section by name (any case), position among the data
        sections, or itself; None gives the main one (None when the file has
        no data section)."""
        return self.data_section if section is None else self._named(section)

    def _named(self, section: Union[str, int, Section]) -> Section:
        if isinstance(section, Section):
            return section
        data = self.data_sections
        if isinstance(section, (int, np.integer)):
            return data[int(section)]
        found = _first(data, [str(section)])
        if found is None:
            raise KeyError(f"no data section {section!r}; there are {[s.name for s in data]}")
        return found

    def curves_of(self, section: SectionKey = None) -> SectionItems:
        """The curve definitions of a data section (the main one by default),
        by name or position. A file without a data section has the curves of
        its Curve (or Log_Definition) section, without values."""
        data = self._data(section)
        if data is None:
            return self._items_of(self._main_definition)
        if id(data) not in self._curve_items:
            self._curve_items[id(data)] = SectionItems(
                data.curve_definition(i) for i in range(data.curve_count))
        return self._curve_items[id(data)]

    @property
    def curves(self) -> SectionItems:
        """The curve definitions of the main data section, in order."""
        return self.curves_of()

    def keys_of(self, section: SectionKey = None) -> CurveNames:
        """The names of a data section's curves (the main one by default)."""
        return CurveNames(self.curves_of(section).keys())

    @property
    def keys(self) -> CurveNames:
        """The names of the main data section's curves ("SFLU:1", "SFLU:2"
        for a duplicated mnemonic, "UNKNOWN:1", "UNKNOWN:2" for none, or
        "UNKNOWN", "UNKNOWN:2" when read with strict=True); `las.keys()` too."""
        return self.keys_of()

    @property
    def null(self) -> Optional[float]:
        """The NULL value of the Well section as a number, or None."""
        null = self.well.get("NULL")
        try:
            return float(null.value.split()[0]) if null else None
        except (ValueError, IndexError):
            return None

    def _column(self, key: Union[str, int], section: SectionKey = None) -> int:
        count = len(self.curves_of(section))
        if isinstance(key, (int, np.integer)):
            if not -count <= int(key) < count:
                raise KeyError(key)
            return int(key) % count
        position = self.curves_of(section)._position(key)
        if position is None:
            raise KeyError(key)
        return position

    def _values(self, data: Optional[Section], column: int) -> Array:
        """The values of a column of a data section; without a data section
        the curve has none (float64 or object by its format)."""
        if data is not None:
            return data.curve_values(column)
        numeric = _is_numeric(self.curves[column].format)
        return np.empty(0, dtype=np.float64 if numeric else object)

    def __getitem__(self, key: Union[str, int]) -> Array:
        """A curve of the main data section by name (any case; the plain
        name of a duplicated mnemonic is the first) or position: a numpy
        array over the library's values for a numeric curve, an object
        array of str for a text curve."""
        return self._values(self.data_section, self._column(key))

    def __contains__(self, key: str) -> bool:
        return key in self.curves

    @property
    def index(self) -> Array:
        """The first curve, normally the depth."""
        return self[0]

    def _depth_in(self, metres_per_unit: float) -> Array:
        unit = self.curves[0].unit.strip().upper() if len(self.curves) else ""
        if unit not in _METRES_PER_UNIT:
            raise ValueError(f"the index unit {unit!r} is not a depth unit")
        return self.index * (_METRES_PER_UNIT[unit] / metres_per_unit)

    @property
    def index_range(self) -> Optional[Tuple[float, float]]:
        """The first and the last value of the index (the first curve of the
        main data section): from the data, or for a headers-only read from
        the first and last row it read without the rows between (a LAS 2.0
        file, not wrapped, whose ~A is the last section). None when that is
        not known: no rows, a text index, or a headers-only read that could
        not take the rows' ends."""
        data = self.data_section
        if data is not None and data.curve_count and data.curve_is_numeric(0):
            values = data.curve_values(0)
            if len(values):
                return float(values[0]), float(values[-1])
        if self._index_ends:
            return self._index_ends[0], self._index_ends[-1]
        return None

    @property
    def depth_m(self) -> Array:
        """The index in metres, from its unit (M, F, FT, FEET, .1IN...)."""
        return self._depth_in(1.0)

    @property
    def depth_ft(self) -> Array:
        """The index in feet, from its unit (M, F, FT, FEET, .1IN...)."""
        return self._depth_in(0.3048)

    @property
    def data(self) -> Array:
        """The main data section as a 2-D array, a row per depth and a column
        per curve (a copy; of dtype object when a curve holds text)."""
        data = self.data_section
        columns = [self._values(data, i) for i in range(len(self.curves))]
        if not columns:
            return np.empty((0, 0))
        return np.column_stack(columns)

    def df(self, copy: bool = False, section: SectionKey = None) -> "pd.DataFrame":
        """A data section (the main one by default; else by name or position
        among `data_sections`) as a pandas DataFrame indexed by its first
        curve, with the NULL value as NaN in the other columns; the index
        keeps its values. Every curve is a column, duplicated mnemonics
        as "SFLU:1", "SFLU:2". A numeric curve without NULL values is not
        copied: its column shares memory with the LasFile, as las[...]
        does; `copy=True` gives a frame of its own. A file without data
        rows, or without a data section, gives a frame of no rows with a
        column per curve."""
        import pandas as pd
        data = self._data(section)
        keys = self.keys_of(data)
        if not keys:
            return pd.DataFrame()
        null = self.null
        columns = {}
        for i, key in enumerate(keys[1:], start=1):
            values = self._values(data, i)
            if null is not None and values.dtype.kind == "f":
                hits = values == null
                if hits.any():
                    values = np.where(hits, np.nan, values)
            columns[key] = values
        index = pd.Index(self._values(data, 0), name=keys[0], copy=copy)
        return pd.DataFrame(columns, index=index, columns=list(keys[1:]), copy=copy)

    # Editing before a write.
    def _definition_of(self, data: Section) -> Optional[Section]:
        """The definition section of a data section: the one its link names,
        else by name (ASCII: Curve; X_Data: X_Definition)."""
        names = [data.association] if data.association else []
        if data.name.upper() in ("ASCII", "A"):
            names += ["Curve", "C"]
        elif data.name.lower().endswith("_data"):
            names.append(data.name[:-5] + "_Definition")
        return _first(self.sections, names) if names else None

    def _replace_curves(self, data: Section, curves: Sequence[Tuple[Param, npt.ArrayLike]]) -> None:
        """Puts a new section with `curves` (pairs of Param and values) in the
        place of `data` (at the end when `data` is not in the document yet);
        arrays handed out before keep the old one."""
        new = Section(data.name, DATA, data.association)
        new.params = data.params
        arrays = [(definition, np.asarray(values)) for definition, values in curves]
        rows = {len(values) for _, values in arrays}
        if len(rows) > 1:
            raise ValueError(f"curves of one section need one length, not {sorted(rows)}")
        for definition, values in arrays:
            if values.dtype.kind in "biuf":
                new.add_numbers(definition, values.astype(np.float64))
            else:
                new.add_texts(definition, values)
        at = next((i for i, s in enumerate(self.sections) if s is data), None)
        if at is None:
            self.sections.append(new)
        else:
            self.sections[at] = new
        self._curve_items.pop(id(data), None)
        definitions = self._definition_of(new)
        if definitions is not None:
            definitions.params = [d for d, _ in curves]
            self._items.pop(id(definitions), None)

    def _curves_now(self, data: Section) -> List[Tuple[Param, npt.ArrayLike]]:
        definitions = self.curves_of(data)
        return [(definitions[i], data.curve_values(i)) for i in range(data.curve_count)]

    def _main_or_new(self) -> Section:
        """The main data section; for a file without one a new section, not
        yet in the document, with the curves of its definitions and no rows
        (ASCII for Curve, X_Data for X_Definition)."""
        data = self.data_section
        if data is not None:
            return data
        definition = self._main_definition
        name, link = "ASCII", definition.name if definition is not None else ""
        if link.lower().endswith("_definition"):
            name = link[:-len("_definition")] + "_Data"
        data = Section(name, DATA, link)
        for i, param in enumerate(self.curves):
            values = self._values(None, i)
            if values.dtype.kind == "f":
                data.add_numbers(param, values)
            else:
                data.add_texts(param, values)
        return data

    def append_curve(self, mnemonic: str, data: npt.ArrayLike, unit: str = "", descr: str = "",
                     value: str = "", format: str = "") -> None:
        """Appends a curve to the main data section (made when there is
        none); `data` has one value per row."""
        section = self._main_or_new()
        definition = Param(mnemonic, unit, value, descr, format)
        self._replace_curves(section, self._curves_now(section) + [(definition, data)])

    def __setitem__(self, key: str, values: npt.ArrayLike) -> None:
        """Replaces the values of a curve of the main data section, or
        appends a curve of that name."""
        section = self._main_or_new()
        if key not in self.curves_of(section):
            self.append_curve(key, values)
            return
        curves = self._curves_now(section)
        column = self._column(key, section)
        curves[column] = (curves[column][0], values)
        self._replace_curves(section, curves)

    def __delitem__(self, key: Union[str, int]) -> None:
        """Removes a curve of the main data section (of the Curve section
        when the file has no data section)."""
        section = self.data_section
        if section is None:
            del self.curves[self._column(key)]
            return
        column = self._column(key, section)
        curves = self._curves_now(section)
        del curves[column]
        self._replace_curves(section, curves)

    def get_curve(self, key: Union[str, int]) -> CurveItem:
        """A curve of the main data section by name or position, as other LAS
        readers give it: mnemonic, unit, description (`descr` too) and its
        values as `data`, the array `las[key]` gives. KeyError when there
        is no such curve."""
        return CurveItem(self.curves[self._column(key)], self[key])

    def delete_curve(self, mnemonic: Optional[str] = None, ix: Optional[int] = None) -> None:
        """Removes a curve of the main data section by name or by position
        (`ix`), as `del las[...]` does."""
        if (mnemonic is None) == (ix is None):
            raise TypeError("delete_curve takes a mnemonic or an ix, one of them")
        del self[mnemonic if mnemonic is not None else int(ix or 0)]

    def set_data(self, frame: "pd.DataFrame", section: SectionKey = None,
                 units: Optional[Mapping[str, str]] = None) -> None:
        """Replaces the curves of a data section (the main one by default)
        with a DataFrame's index and columns; NaN becomes the NULL value. A
        column keeps the definition (unit, description) of the curve of its
        name, else takes its unit from `units`."""
        data = self._main_or_new() if section is None else self._named(section)
        old, units = self.curves_of(data), dict(units or {})
        null = self.null if self.null is not None else -999.25
        columns = [(frame.index.name or (old.keys()[0] if len(old) else "DEPT"), frame.index)]
        columns += [(str(name), frame[name]) for name in frame.columns]
        curves = []
        for name, values in columns:
            values = np.asarray(values)
            if values.dtype.kind in "biuf":
                values = np.where(np.isnan(values.astype(float)), null, values)
            found = old.get(name)
            definition = Param(found.mnemonic, found.unit, found.value, found.description,
                               found.format) if found is not None else \
                Param(name.split(":")[0], units.get(name, ""))
            curves.append((definition, values))
        self._replace_curves(data, curves)

    def _for_writing(self, range_from_data: bool = True) -> List[Section]:
        """The sections with what was changed through the mappings, and,
        with `range_from_data`, the Well section's STRT, STOP and STEP taken
        from the main data where they disagree with it (a repairing write
        leaves that to the writer, which reports each change)."""
        for section in self.sections:
            if id(section) in self._items:
                section.params = list(self._items[id(section)])
        for data in self.data_sections:
            items = self._curve_items.get(id(data))
            if items is not None and len(items) == data.curve_count:
                for i, definition in enumerate(items):
                    data.set_curve_definition(i, definition)
                definition_section = self._definition_of(data)
                if definition_section is not None and definition_section.params:
                    definition_section.params = list(items)
                    self._items.pop(id(definition_section), None)
        well = _first(self.sections, ["Well", "W"])
        main = self.data_section
        if not range_from_data or well is None or main is None or main.curve_count == 0 \
                or not main.curve_is_numeric(0) or len(main.curve_values(0)) == 0:
            return list(self.sections)
        fixed = well.copy()
        fixed.params = _range_from_data(well.params, main.curve_values(0))
        return [fixed if s is well else s for s in self.sections]

    def to_string(self, version: Optional[int] = None, delimiter: str = " ", *,
                  strict: bool = False) -> str:
        """The LAS text of the document as `quarl.write` would write it, in
        LAS 2.0 or 3.0 (`version` 2 or 3; by default the version it was read
        in), with the same repairs and warnings (`strict=True` refuses
        instead)."""
        from .files import to_bytes
        version = version or (3 if self.las3 else 2)
        return to_bytes(self, version, delimiter, encoding="utf-8", strict=strict).decode("utf-8")

    def write(self, target: "Target", version: Optional[int] = None, delimiter: str = " ",
              progress: "Progress" = None, *, encoding: Optional[str] = None,
              strict: bool = False) -> List["Repair"]:
        """Writes the document as `quarl.write(target, las, ...)` does and
        returns its changes; the version is by default the one it was read
        in (2 or 3)."""
        from .files import write
        return write(target, self, version or (3 if self.las3 else 2), delimiter, progress,
                     encoding=encoding, strict=strict)

    def to_csv(self, path_or_buffer: Union[str, "os.PathLike[str]", IO[str]], *,
               units: bool = True, section: SectionKey = None, delimiter: str = ",") -> None:
        """Writes a data section (the main one by default) as CSV through
        pandas: a first header row of the curve names (as `las.keys`), a
        second of their units (left out with `units=False`), then a row per
        depth; NULL values are empty cells, the index keeps its values."""
        import pandas as pd
        keys = list(self.keys_of(self._data(section)))
        frame = self.df(section=section).reset_index() if keys else pd.DataFrame()
        if units and keys:
            definitions = self.curves_of(self._data(section))
            frame.columns = pd.MultiIndex.from_tuples(
                [(key, definition.unit) for key, definition in zip(keys, definitions)])
        else:
            frame.columns = keys
        frame.to_csv(path_or_buffer, index=False, sep=delimiter)

    @property
    def result_name(self) -> str:
        """The name of the read's result code ("LASFILE_OK" for a good read)."""
        return result_name(self.result)

    def __repr__(self) -> str:
        data = self.data_section
        rows = len(data.curve_values(0)) if data is not None and data.curve_count else 0
        return (f"<LasFile {self.path or ''} LAS {self.version}, {len(self.sections)} sections, "
                f"{rows} rows of curves {list(self.keys)}, {len(self.notes)} notes>")

    @classmethod
    def from_df(cls, frame: "pd.DataFrame", well: Optional[Mapping[str, object]] = None,
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


def _number(text: str) -> Optional[float]:
    try:
        return float(text.split()[0])
    except (ValueError, IndexError):
        return None


def _range_from_data(params: List[Param], index: Array) -> List[Param]:
    """STRT and STOP as the first and last depth, STEP as the even step of
    the depths (0 when uneven), each only where the line disagrees with the
    data by more than 1e-7; the lines keep their unit and description."""
    steps = np.diff(index)
    step = float(steps[0]) if len(steps) and np.all(np.abs(steps - steps[0]) <= 1e-7) else 0.0
    wanted = {"STRT": float(index[0]), "STOP": float(index[-1]), "STEP": step}
    out = []
    for param in params:
        name = param.mnemonic.strip().upper()
        number = _number(param.value)
        if name in wanted and (number is None or abs(number - wanted[name]) > 1e-7):
            param = Param(param.mnemonic, param.unit, repr(wanted[name]), param.description,
                          param.format, param.association)
        out.append(param)
    return out


def _to_params(values: Mapping[str, object]) -> List[Param]:
    return [value if isinstance(value, Param) else Param(str(name), "", str(value))
            for name, value in values.items()]
