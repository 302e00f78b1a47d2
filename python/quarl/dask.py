"""An archive of LAS files on a Dask cluster: each file is read by a worker,
and the results come back as dask DataFrames.

    from dask.distributed import Client, LocalCluster
    import quarl.dask
    client = Client(LocalCluster(n_workers=4))        # or Client("tcp://scheduler:8786")
    heads = quarl.dask.headers(paths).compute()       # one row per file
    logs = quarl.dask.curves(paths, ["GR", "RHOB"])   # one partition per file
    logs.groupby("path").GR.mean().compute()

Every worker needs the quarl package. A path is read where the worker runs
(a shared filesystem); a URL that fsspec opens (s3://, gcs://, http://,
zip://file.las::archive.zip, file://...) is opened by the worker through
fsspec and read from memory, so an archive in object storage reads on a
cluster. Both functions use the current Dask client, or the scheduler that
dask is configured with.
"""
from __future__ import annotations

import os
from typing import Iterable, List, Optional, Sequence, Union

import dask
import dask.dataframe as dd
import numpy as np
import pandas as pd

import quarl
from quarl.files import HEADER_FIELDS, PathLike, header_row

__all__ = ["headers", "curves"]

_HEADER_COLUMNS = ["path", "result", "version", *HEADER_FIELDS, "curves"]


def _is_url(path: str) -> bool:
    return "://" in path or "::" in path


def _read(path: str, headers_only: bool = False) -> quarl.LasFile:
    """Reads a path, or a URL through fsspec; a URL that cannot be opened
    raises LasError as a path that cannot be opened does."""
    if not _is_url(path):
        return quarl.read(path, headers_only=headers_only)
    import fsspec
    try:
        with fsspec.open(path, "rb") as handle:
            data = handle.read()
    except OSError as error:
        raise quarl.LasError(1, f"{path}: LASFILE_IO_FAILED: {error}", path=path) from error
    las = quarl.read(data, headers_only=headers_only)
    las.path = path
    return las


def _header_frame(paths: Sequence[str]) -> pd.DataFrame:
    rows = []
    for path in paths:
        item: Union[quarl.LasFile, quarl.LasError]
        try:
            item = _read(path, headers_only=True)
        except quarl.LasError as error:
            item = error
        rows.append(header_row(item, path))
    return pd.DataFrame(rows, columns=_HEADER_COLUMNS)


def headers(paths: Iterable[PathLike], files_per_task: int = 16) -> dd.DataFrame:
    """A dask DataFrame of one row per file, as quarl.headers gives it; each
    task reads `files_per_task` files without their data values."""
    names = [os.fsdecode(p) for p in paths]
    chunks = [names[i:i + files_per_task] for i in range(0, len(names), files_per_task)]
    meta = pd.DataFrame({name: pd.Series(dtype=object) for name in _HEADER_COLUMNS})
    parts = [dask.delayed(_header_frame)(chunk) for chunk in chunks]
    return dd.from_delayed(parts, meta=meta, verify_meta=False)


def _curve_frame(path: str, columns: List[str], index: str) -> pd.DataFrame:
    try:
        frame = _read(path).df()
    except quarl.LasError:
        frame = pd.DataFrame()
    frame = frame.reindex(columns=columns).astype(float)
    frame.index = frame.index.astype(float) if len(frame) else pd.Index([], dtype=float)
    frame.index.name = index
    frame.insert(0, "path", path)
    return frame


def curves(paths: Iterable[PathLike], columns: Optional[Sequence[str]] = None,
           index: str = "DEPT") -> dd.DataFrame:
    """A dask DataFrame of the main data sections, one partition per file,
    indexed by the first curve, with a `path` column and the given numeric
    curves (by default those of the first file); a curve a file lacks is
    NaN, and a file that cannot be read gives no rows."""
    names = [os.fsdecode(p) for p in paths]
    if columns is None:
        columns = _read(names[0], headers_only=True).keys[1:] if names else []
    columns = list(columns)
    meta = pd.DataFrame({"path": pd.Series(dtype=object),
                         **{c: pd.Series(dtype=np.float64) for c in columns}},
                        index=pd.Index([], dtype=np.float64, name=index))
    parts = [dask.delayed(_curve_frame)(path, columns, index) for path in names]
    return dd.from_delayed(parts, meta=meta, verify_meta=False)
