"""LAS 2.0 and 3.0 well logs in numpy and pandas, read and written by the
quarl C++ library.

    las = quarl.read("well.las")
    las["GR"]            # numpy array over the library's own values
    las.df()             # pandas DataFrame indexed by the first curve
    quarl.write("out.las", las, version=3)

The package is laid out by concern: `las` holds the document (LasFile), `io`
reading and writing, `errors` the error and result names, `dask` the cluster
functions.
"""
from __future__ import annotations

from ._quarl import Note, Param, Section
from .errors import LasError, result_name
from .files import HEADER_FIELDS, header_row, headers, read, read_many, to_bytes, write
from .las import DATA, DEFINITION, HEADER, PARAMETER, LasFile

from_df = LasFile.from_df

__all__ = [
    "LasError", "LasFile", "Note", "Param", "Section", "read", "write", "read_many", "headers",
    "from_df", "to_bytes", "result_name", "PARAMETER", "DEFINITION", "DATA", "HEADER",
]
