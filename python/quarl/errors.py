"""The error that a failed read or write raises, the changes a write makes to
what the version cannot hold, and the names of result codes."""
from __future__ import annotations

from typing import TYPE_CHECKING, NamedTuple, Optional, Tuple

from . import _quarl

if TYPE_CHECKING:
    from .las import LasFile


def result_name(code: int) -> str:
    """The name of a result code, such as "LASFILE_BAD_FORMAT"."""
    return _quarl.result_name(code)


class LasError(Exception):
    """A read or a write that did not succeed.

    `code` is the library's result code and `name` its name; a read gives the
    `line` where it stopped (None when unknown) and `las`, what was read up to
    there; a write gives the writer's record: `section`, `mnemonic`, `column`
    and `row` (None or -1 when the failure has none)."""

    def __init__(self, code: int, message: str, *, path: Optional[str] = None,
                 line: Optional[int] = None, las: Optional[LasFile] = None,
                 section: Optional[str] = None, mnemonic: Optional[str] = None,
                 column: int = -1, row: int = -1) -> None:
        super().__init__(message)
        self.code, self.name = code, result_name(code)
        self.path, self.line, self.las = path, line, las
        self.section, self.mnemonic, self.column, self.row = section, mnemonic, column, row


class Repair(NamedTuple):
    """One change a write made so that the document could be written in its
    version: `kind` names it ("LASREPAIR_MNEMONIC", "LASREPAIR_SECTION_RENAMED",
    ...), `section` and `mnemonic` say where (the mnemonic is "" for a change
    of the section itself), `old` and `new` are the text before and after
    ("" for what was added or left out), `text` the change in words."""
    kind: str
    section: str
    mnemonic: str
    old: str
    new: str
    text: str


class RepairWarning(UserWarning):
    """The warning of one change a write made (see Repair); its message is
    the change in words. `warnings.simplefilter("error", quarl.RepairWarning)`
    turns every change into an error, `"ignore"` silences them."""

    def __init__(self, repair: Repair) -> None:
        super().__init__(repair.text)
        self.repair = repair
        self.kind, self.section, self.mnemonic = repair.kind, repair.section, repair.mnemonic
        self.old, self.new = repair.old, repair.new

    def __reduce__(self) -> Tuple[type, Tuple[Repair]]:
        # Made again from its Repair, so that it crosses to another process.
        return RepairWarning, (self.repair,)
