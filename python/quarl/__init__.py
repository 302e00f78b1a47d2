"""LAS 2.0 and 3.0 well logs in numpy and pandas, read and written by the
quarl C++ library.

    las = quarl.read("well.las")
    las["GR"]            # numpy array over the library's own values
    las.df()             # pandas DataFrame indexed by the first curve
    quarl.write("out.las", las, version=3)   # the list of repairs, each a RepairWarning too

The package is laid out by concern: `las` holds the document (LasFile),
`items` the lines of a section by name (SectionItems), `files` reading and
writing, `encodings` the code pages of texts, `errors` the error and result
names, `dask` the cluster functions. Every public name has types (py.typed).
"""
from __future__ import annotations

from ._quarl import Note, Param, Section
from ._quarl import __version__
from .errors import LasError, Repair, RepairWarning, result_name
from .files import HEADER_FIELDS, header_row, headers, read, read_many, to_bytes, write
from .items import CurveItem, SectionItems
from .las import DATA, DEFINITION, HEADER, PARAMETER, CurveNames, LasFile

from_df = LasFile.from_df

__all__ = [
    "LasError", "Repair", "RepairWarning", "LasFile", "CurveItem", "Note", "Param", "Section", "SectionItems", "CurveNames", "read", "write",
    "read_many", "headers", "from_df", "to_bytes", "result_name", "PARAMETER", "DEFINITION", "DATA",
    "HEADER", "HEADER_FIELDS", "__version__",
]
