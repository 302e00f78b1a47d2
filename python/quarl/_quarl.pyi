"""Types of the native module; the package `quarl` is its public face."""
from os import PathLike
from typing import Callable, Iterable, List, Optional, Union

import numpy as np

_Text = Union[str, bytes]
_Progress = Optional[Callable[[float], object]]

class Param:
    mnemonic: str
    unit: str
    value: str
    description: str
    format: str
    association: str
    def __init__(self, mnemonic: _Text, unit: _Text = "", value: _Text = "",
                 description: _Text = "", format: _Text = "", association: _Text = "") -> None: ...

class Section:
    name: str
    type: int
    flags: int
    association: str
    params: List[Param]
    curve_count: int
    def __init__(self, name: _Text, type: int, association: _Text = "") -> None: ...
    def curve_definition(self, index: int) -> Param: ...
    def curve_is_numeric(self, index: int) -> bool: ...
    def set_curve_definition(self, index: int, definition: Param) -> None: ...
    def curve_values(self, index: int) -> np.ndarray: ...
    def add_numbers(self, definition: Param, values: np.ndarray) -> None: ...
    def add_texts(self, definition: Param, values: Iterable[object]) -> None: ...
    def copy(self) -> Section: ...

class CancelToken:
    is_set: bool
    def __init__(self) -> None: ...
    def set(self) -> None: ...

class Note:
    line: int
    kind: int
    kind_name: str
    text: str

class ReadResult:
    sections: List[Section]
    result: int
    las3: bool
    wrapped: bool
    delimiter: str
    notes: List[Note]
    line: int
    foreign: bytes

def read(path: bytes, lenient: bool, headers_only: bool, progress: _Progress = None,
         cancel: Optional[CancelToken] = None, data: Optional[object] = None) -> ReadResult: ...
def write(path: bytes, sections: List[Section], las3: bool, delimiter: str,
          progress: _Progress = None, cancel: Optional[CancelToken] = None,
          to_text: bool = False) -> dict: ...
def transcode(read: ReadResult, table: List[str]) -> None: ...
def encode(sections: List[Section], table: List[str], name: str) -> List[Section]: ...
def result_name(code: int) -> str: ...
def result_description(code: int) -> str: ...
def _time_native_read(path: Union[str, bytes, PathLike], lenient: bool) -> float: ...
