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
cluster. The functions use the current Dask client, or the scheduler that
dask is configured with.

scan_catalog fills the catalog of quarl-catalog (quarl.catalog) from an
archive too large for one machine: workers read the headers, and the driver
stores what they send back in one SQLite file.

    quarl.dask.scan_catalog("s3://logs/archive/", "archive.sqlite")
    quarl.catalog.query("archive.sqlite", curves=["GR"])
"""
from __future__ import annotations

import calendar
import dataclasses
import os
import time
from typing import (TYPE_CHECKING, Dict, Iterable, Iterator, List, Mapping, NamedTuple, Optional,
                    Sequence, Tuple, Union)

import dask
import dask.dataframe as dd
import numpy as np
import pandas as pd

import quarl
from quarl.files import HEADER_COLUMNS, PathLike, header_row

if TYPE_CHECKING:
    from distributed import Client
    from fsspec import AbstractFileSystem

    # quarl.catalog is imported where it is used: it fails to import when the
    # native module was built without SQLite, and the rest of this module
    # works without it.
    from quarl.catalog import Catalog, FileRecord, ScanSummary

__all__ = ["headers", "curves", "scan_catalog"]



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
    return pd.DataFrame(rows, columns=HEADER_COLUMNS)


def headers(paths: Iterable[PathLike], files_per_task: int = 16) -> dd.DataFrame:
    """A dask DataFrame of one row per file, as quarl.headers gives it; each
    task reads `files_per_task` files without their data values."""
    names = [os.fsdecode(p) for p in paths]
    chunks = [names[i:i + files_per_task] for i in range(0, len(names), files_per_task)]
    meta = pd.DataFrame({name: pd.Series(dtype=object) for name in HEADER_COLUMNS})
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


class _Listed(NamedTuple):
    """A file found for the catalog: its path in its filesystem, the name the
    catalog gives it, and its stamp."""
    path: str
    name: str
    size: int
    mtime_ns: int


def _is_local(fs: AbstractFileSystem) -> bool:
    from fsspec.implementations.local import LocalFileSystem
    return isinstance(fs, LocalFileSystem)


def _name(fs: AbstractFileSystem, path: str, chain: Optional[str]) -> str:
    """What the catalog calls a file: a local path as it is, as quarl-catalog
    scan stores it; anything else as the URL that fsspec opens it by (with
    the rest of a chain: zip://a.las::s3://bucket/archive.zip)."""
    if chain is None and _is_local(fs):
        return path
    name: str = fs.unstrip_protocol(path)
    return f"{name}::{chain}" if chain else name


def _mtime_ns(fs: AbstractFileSystem, path: str, info: Mapping[str, object]) -> int:
    """The modification time in nanoseconds since 1970 as the storage tells
    it; 0 when it tells none. Local files give the exact time of the
    operating system, the one quarl-catalog scan stores."""
    if _is_local(fs):
        return os.stat(path).st_mtime_ns
    for key in ("mtime", "LastModified", "last_modified", "updated", "modified", "created",
                "date_time"):
        value = info.get(key)
        if value is None:
            continue
        # A zip member's (year, month, day, hour, minute, second).
        if isinstance(value, (tuple, list)):
            return calendar.timegm(tuple(value)) * 10**9
        if isinstance(value, (int, float)):
            return int(value * 1e9)
        stamp = pd.Timestamp(value)
        return int((stamp.tz_localize("UTC") if stamp.tzinfo is None else stamp).value)
    return 0


def _has_magic(path: str) -> bool:
    return any(c in path for c in "*?[")


@dataclasses.dataclass
class _Listing:
    files: Dict[str, Tuple[AbstractFileSystem, _Listed]] = dataclasses.field(
        default_factory=dict)  # by name
    folders: List[Tuple[str, str]] = dataclasses.field(default_factory=list)  # (start, end) of
    # the names of the files in a folder scanned whole
    not_las: int = 0
    unreadable: int = 0


def _list(urls: Sequence[str], options: Mapping[str, object]) -> _Listing:
    """The LAS files the URLs name: every *.las under a folder, what a glob
    matches, a file as given."""
    import fsspec
    listing = _Listing()
    for url in urls:
        fs, root = fsspec.core.url_to_fs(url, **options)
        chain = url.split("::", 1)[1] if "::" in url else None
        try:
            if _has_magic(root):
                found = fs.glob(root, detail=True)
            elif fs.isdir(root):
                found = fs.find(root, detail=True)
                las = {p: i for p, i in found.items() if p.lower().endswith(".las")}
                listing.not_las += len(found) - len(las)
                found = las
                start = _name(fs, root.rstrip("/"), chain).split("::")[0]
                listing.folders.append((start if start.endswith("/") else start + "/",
                                        f"::{chain}" if chain else ""))
            else:
                found = {root: fs.info(root)}
        except OSError:
            listing.unreadable += 1
            continue
        for path, info in found.items():
            if info.get("type", "file") == "file":
                name = _name(fs, path, chain)
                listing.files[name] = (fs, _Listed(path, name, int(info.get("size") or 0),
                                                   _mtime_ns(fs, path, info)))
    return listing


def _read_records(fs: AbstractFileSystem, files: List[_Listed]) -> List[FileRecord]:
    """On a worker: the catalog's record of each file, its headers read from
    its bytes by the native module. A file that cannot be fetched gives a
    record that says so."""
    from . import catalog
    records = []
    for item in files:
        try:
            data = fs.cat_file(item.path)
        # Storages fail in errors of their own (zip, HTTP, object stores):
        # any of them is this file's failure to be fetched, not the scan's.
        except Exception:  # noqa: BLE001
            records.append(catalog.FileRecord(item.name, item.size, item.mtime_ns,
                                              result="LASFILE_IO_FAILED"))
            continue
        records.append(catalog.read_file_record_from_bytes(item.name, data, item.mtime_ns))
    return records


_Task = Tuple["AbstractFileSystem", List[_Listed]]  # files to read on one worker


def _tasks(todo: Iterable[Tuple[AbstractFileSystem, _Listed]], size: int) -> List[_Task]:
    """The files in tasks of `size`, each of one filesystem."""
    by_fs: Dict[int, _Task] = {}
    for fs, item in todo:
        by_fs.setdefault(id(fs), (fs, []))[1].append(item)
    return [(fs, items[i:i + size]) for fs, items in by_fs.values()
            for i in range(0, len(items), size)]


def _current_client() -> Optional[Client]:
    try:
        from distributed import default_client
        return default_client()
    except (ImportError, ValueError):
        return None


def _results(tasks: List[_Task], client: Optional[Client]) -> Iterator[List[FileRecord]]:
    """The records of each task as it ends, through the distributed client
    given or current, else through the scheduler dask is configured with."""
    client = client or _current_client()
    if client is None:
        yield from dask.compute(*[dask.delayed(_read_records)(fs, files) for fs, files in tasks])
        return
    from distributed import as_completed
    futures = [client.submit(_read_records, fs, files, pure=False) for fs, files in tasks]
    for future in as_completed(futures):
        yield future.result()
        future.release()


def _store(catalog: Catalog, records: List[FileRecord], summary: ScanSummary) -> None:
    catalog.store(records)
    summary["read"] += len(records)
    summary["failed"] += sum(record.result != "LASFILE_OK" for record in records)
    summary["changed"] += sum(record.changed_while_read for record in records)


def scan_catalog(urls: Union[PathLike, Iterable[PathLike]], db: PathLike, *,
                 client: Optional[Client] = None, files_per_task: int = 32, batch: int = 256,
                 storage_options: Optional[Mapping[str, object]] = None) -> ScanSummary:
    """Fills the catalog `db` (created when missing) with the headers of the
    LAS files that `urls` name: folders (every *.las under them), globs or
    files, local or anything fsspec opens (s3://archive/, zip://**::a.zip).

    The driver lists the files and keeps the catalog; workers fetch each
    file's bytes and read its headers with quarl-catalog's own reading, in
    tasks of `files_per_task`; the records come back and are stored in
    transactions of `batch` files. As `quarl-catalog scan`, a file of the
    size and time stored is not read again, and a stored file gone from a
    folder scanned whole is removed. Local files are named by their path, as
    the program names them, so both may fill one catalog; others by URL.
    Returns the counts that quarl.catalog.scan returns."""
    from . import catalog
    start = time.monotonic()
    if isinstance(urls, (str, bytes, os.PathLike)):
        urls = [urls]
    listing = _list([os.fsdecode(url) for url in urls], storage_options or {})
    summary = catalog.ScanSummary(seen=len(listing.files), read=0, unchanged=0, failed=0,
                                  changed=0, removed=0, not_las=listing.not_las,
                                  unreadable=listing.unreadable, links=0, seconds=0.0)
    with catalog.Catalog(os.fsdecode(db)) as store:
        stored = store.stored_files()
        todo = [(fs, item) for fs, item in listing.files.values()
                if stored.get(item.name) != (item.size, item.mtime_ns)]
        summary["unchanged"] = len(listing.files) - len(todo)
        for name in stored:
            if name not in listing.files and any(name.startswith(begin) and name.endswith(end)
                                                 for begin, end in listing.folders):
                store.remove(name)
                summary["removed"] += 1
        pending: List[FileRecord] = []
        for records in _results(_tasks(todo, files_per_task), client):
            pending += records
            if len(pending) >= batch:
                _store(store, pending, summary)
                pending = []
        _store(store, pending, summary)
    summary["seconds"] = time.monotonic() - start
    return summary
