"""The error that a failed read or write raises, and the names of result codes."""
from __future__ import annotations

from typing import TYPE_CHECKING, Optional

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
