"""SectionItems: the parameter lines or curve definitions of a section, as a
list in file order that is also a mapping by mnemonic.

Every line is kept. Mnemonics that occur more than once are told apart as
"SFLU:1", "SFLU:2", ...; the plain name finds the first of them. A line
without a mnemonic is "UNKNOWN", then "UNKNOWN:2", ... (a lenient read,
the default, has already named curve lines "UNKNOWN:1", "UNKNOWN:2", ...).
Names keep the file's case; lookups ignore the case of ASCII letters.

    las.well["WELL"].value, las.well.WELL.value, las.well[0]
    las.curves["GR"].unit, las.curves.GR.unit, [c.mnemonic for c in las.curves]
    las.well.keys(), las.well.values(), las.well.items(), "STEP" in las.well
"""
from __future__ import annotations

from typing import Any, Dict, Iterable, List, Optional, SupportsIndex, Tuple, TypeVar, Union, overload

import numpy.typing as npt

from ._quarl import Param

_Default = TypeVar("_Default")


def unique_names(mnemonics: Iterable[str]) -> List[str]:
    """The names of lines in order: duplicates numbered from 1 ("SFLU:1",
    "SFLU:2"), lines without a mnemonic "UNKNOWN", "UNKNOWN:2", ..."""
    stripped = [m.strip() for m in mnemonics]
    counts: Dict[str, int] = {}
    for name in stripped:
        counts[name.upper()] = counts.get(name.upper(), 0) + 1
    seen: Dict[str, int] = {}
    names = []
    for name in stripped:
        key = name.upper()
        seen[key] = seen.get(key, 0) + 1
        if not name:
            names.append("UNKNOWN" if seen[key] == 1 else f"UNKNOWN:{seen[key]}")
        elif counts[key] > 1:
            names.append(f"{name}:{seen[key]}")
        else:
            names.append(name)
    return names


class SectionItems(List[Param]):
    """A list of Param in file order, looked up by name as well: see the
    module's text. Changing a Param's fields changes the document (a write
    takes the lines from here)."""

    def _names(self) -> List[str]:
        return unique_names(param.mnemonic for param in self)

    def _position(self, key: str) -> Optional[int]:
        names = self._names()
        if key in names:
            return names.index(key)
        folded = key.strip().upper()
        for i, name in enumerate(names):  # any case; then the plain name of a duplicate
            if name.upper() == folded:
                return i
        for i, param in enumerate(self):
            if param.mnemonic.strip().upper() == folded:
                return i
        return None

    def keys(self) -> List[str]:
        """The names of the lines in file order; a repeated mnemonic gets a
        suffix (":1", ":2") as `unique_names` makes it."""
        return self._names()

    def values(self) -> List[Param]:
        """The lines (Param) in file order, as a new list."""
        return list(self)

    def items(self) -> List[Tuple[str, Param]]:
        """Pairs of name (as `keys` gives it) and line, in file order."""
        return list(zip(self._names(), self))

    @overload
    def get(self, key: str) -> Optional[Param]: ...

    @overload
    def get(self, key: str, default: _Default) -> Union[Param, _Default]: ...

    def get(self, key: str, default: object = None) -> object:
        """The line named `key` (its name as `keys` gives it, in any case, or
        a repeated mnemonic's plain name for its first line); `default` when
        there is none."""
        position = self._position(key) if isinstance(key, str) else None
        return default if position is None else list.__getitem__(self, position)

    @overload
    def __getitem__(self, key: Union[SupportsIndex, str]) -> Param: ...

    @overload
    def __getitem__(self, key: slice) -> List[Param]: ...

    def __getitem__(self, key: Union[SupportsIndex, slice, str]) -> Union[Param, List[Param]]:
        if not isinstance(key, str):
            return list.__getitem__(self, key)
        position = self._position(key)
        if position is None:
            raise KeyError(key)
        return list.__getitem__(self, position)

    @overload
    def __setitem__(self, key: SupportsIndex, value: Param) -> None: ...

    @overload
    def __setitem__(self, key: slice, value: Iterable[Param]) -> None: ...

    @overload
    def __setitem__(self, key: str, value: object) -> None: ...

    def __setitem__(self, key: Union[SupportsIndex, slice, str], value: Any) -> None:
        """By position as a list; by name a Param replaces the line (or is
        appended), anything else becomes the line's value."""
        if not isinstance(key, str):
            list.__setitem__(self, key, value)
            return
        position = self._position(key)
        if not isinstance(value, Param):
            if position is not None:
                list.__getitem__(self, position).value = str(value)
                return
            value = Param(key, "", str(value))
        if position is None:
            self.append(value)
        else:
            list.__setitem__(self, position, value)

    def __delitem__(self, key: Union[SupportsIndex, slice, str]) -> None:
        if isinstance(key, str):
            position = self._position(key)
            if position is None:
                raise KeyError(key)
            key = position
        list.__delitem__(self, key)

    def __contains__(self, key: object) -> bool:
        if isinstance(key, str):
            return self._position(key) is not None
        return list.__contains__(self, key)

    def __getattr__(self, name: str) -> Param:
        if name.startswith("__"):
            raise AttributeError(name)
        position = self._position(name)
        if position is None:
            raise AttributeError(name)
        return self[position]

    def __dir__(self) -> List[str]:
        return sorted(set(super().__dir__()) | {n for n in self._names() if n.isidentifier()})

    def __repr__(self) -> str:
        lines = [f"  {name}: {param.value.strip()!r} {param.unit} {param.description.strip()!r}"
                 for name, param in self.items()]
        return "SectionItems([\n" + "\n".join(lines) + "\n])" if lines else "SectionItems([])"


class CurveItem:
    """A curve as `LasFile.get_curve` hands it out: its definition line beside
    its values. The fields are those of the Param in `las.curves`, so that a
    new unit or description set here is what a write takes; `data` is the
    array `las[name]` gives (over the library's values for a numeric curve)."""

    def __init__(self, definition: Param, data: npt.NDArray[Any]) -> None:
        self.definition, self.data = definition, data

    @property
    def mnemonic(self) -> str:
        """The curve's name in its definition line (changing it renames the curve)."""
        return self.definition.mnemonic

    @mnemonic.setter
    def mnemonic(self, text: str) -> None:
        self.definition.mnemonic = text

    @property
    def unit(self) -> str:
        """The unit in the definition line ("M", "GAPI"; "" for none)."""
        return self.definition.unit

    @unit.setter
    def unit(self, text: str) -> None:
        self.definition.unit = text

    @property
    def value(self) -> str:
        """The value field of the definition line (usually "", or an API code)."""
        return self.definition.value

    @value.setter
    def value(self, text: str) -> None:
        self.definition.value = text

    @property
    def description(self) -> str:
        """The description in the definition line, behind its colon."""
        return self.definition.description

    @description.setter
    def description(self, text: str) -> None:
        self.definition.description = text

    @property
    def descr(self) -> str:
        """The description under the short name other LAS readers give it."""
        return self.definition.description

    @descr.setter
    def descr(self, text: str) -> None:
        self.definition.description = text

    @property
    def format(self) -> str:
        """The format in braces of a LAS 3.0 definition ("{F}"); "" for none."""
        return self.definition.format

    def __repr__(self) -> str:
        return (f"CurveItem(mnemonic={self.mnemonic!r}, unit={self.unit!r}, "
                f"descr={self.description!r}, data.shape={self.data.shape})")
