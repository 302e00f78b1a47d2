"""The catalog of an archive of LAS files, the SQLite file that quarl-catalog
keeps, with pandas: scan folder trees into it, then ask it which files hold
the curves, depths and wells wanted.

    import quarl.catalog
    quarl.catalog.scan(["/archive"], "archive.sqlite")    # counts, a ScanSummary
    hits = quarl.catalog.query("archive.sqlite", curves=["GR", "RHOB"],
                               depth=(1000, 1500), unit="m", well="NORTH*")
    failed, note_kinds = quarl.catalog.problems("archive.sqlite")
    quarl.catalog.wells("archive.sqlite")                 # one row per file

Reading the headers, storing them and building the SQL of every question is
the program's own code in the native module, so that the program and this
module answer alike; here the questions run through Python's sqlite3 into
DataFrames. docs/CATALOG.md describes the tables. quarl.dask.scan_catalog
fills the same catalog from a cluster.
"""
from __future__ import annotations

import contextlib
import os
import pathlib
import sqlite3
from typing import Iterable, Iterator, NamedTuple, Optional, Sequence, Tuple, TypedDict, Union

import pandas as pd

from . import _quarl
from .files import PathLike

if not hasattr(_quarl, "Catalog"):
    raise ImportError("quarl.catalog is not available: the native module was built without SQLite "
                      "(Debian: libsqlite3-dev); rebuild quarl with it")

CatalogError = _quarl.CatalogError
Catalog = _quarl.Catalog
FileRecord = _quarl.FileRecord
read_file_record = _quarl.read_file_record
read_file_record_from_bytes = _quarl.read_file_record_from_bytes

__all__ = ["scan", "query", "problems", "files", "curves", "wells", "Problems", "ScanSummary",
           "Catalog", "CatalogError", "FileRecord", "read_file_record",
           "read_file_record_from_bytes"]


class ScanSummary(TypedDict):
    """What a scan counted: the LAS files found (seen), of them those read and
    stored, those left as stored (unchanged), the read ones whose read ended
    in an error (failed) or that changed while read; the stored files gone
    and removed; other files passed over (not_las), folders and files that
    could not be opened (unreadable), links passed over; and how long the
    scan took."""
    seen: int
    read: int
    unchanged: int
    failed: int
    changed: int
    removed: int
    not_las: int
    unreadable: int
    links: int
    seconds: float


def scan(paths: Union[PathLike, Iterable[PathLike]], db: PathLike, *, hash: bool = False,
         threads: Optional[int] = None) -> ScanSummary:
    """Scans the folder trees `paths` into the catalog `db` (created when
    missing), as `quarl-catalog scan` does: new and changed LAS files are
    read, vanished ones removed. Returns the counts, a ScanSummary.
    CatalogError, with nothing scanned, when a path is not there.
    Ctrl-C stops the scan after the files stored so far."""
    if isinstance(paths, (str, bytes, os.PathLike)):
        paths = [paths]
    roots = [os.fsdecode(path) for path in paths]
    return _quarl.scan_trees(roots, os.fsdecode(db), hash=hash, threads=threads or 0)


@contextlib.contextmanager
def _connect(db: PathLike) -> Iterator[sqlite3.Connection]:
    """A read-only connection to the catalog `db`, migrated first when it is
    of an older schema; CatalogError when it is no catalog."""
    path = pathlib.Path(os.fsdecode(db)).resolve()
    if not path.is_file():
        raise CatalogError(f"{path}: no such catalog")
    version = _schema_version(path)
    if version < _quarl.CATALOG_SCHEMA_VERSION:
        Catalog(str(path), create=False).close()
    connection = sqlite3.connect(f"{path.as_uri()}?mode=ro", uri=True)
    # Texts a file held in no UTF-8 come out with U+FFFD instead of failing.
    connection.text_factory = lambda text: text.decode("utf-8", "replace")
    try:
        yield connection
    finally:
        connection.close()


def _schema_version(path: pathlib.Path) -> int:
    connection = sqlite3.connect(f"{path.as_uri()}?mode=ro", uri=True)
    try:
        row = connection.execute(
            "SELECT value FROM catalog_info WHERE key = 'schema_version'").fetchone()
    except sqlite3.DatabaseError as error:
        raise CatalogError(f"{path}: not a quarl catalog ({error})") from None
    finally:
        connection.close()
    version = int(row[0]) if row else 0
    if version < 1 or version > _quarl.CATALOG_SCHEMA_VERSION:
        raise CatalogError(f"{path}: a catalog of schema version {version}; this quarl reads "
                           f"versions 1 to {_quarl.CATALOG_SCHEMA_VERSION}")
    return version


def _frame(db: PathLike, sql: str, params: Sequence[str] = ()) -> pd.DataFrame:
    with _connect(db) as connection:
        return pd.read_sql_query(sql, connection, params=list(params))


def query(db: PathLike, curves: Union[str, Sequence[str]] = (),
          depth: Optional[Tuple[float, float]] = None, unit: str = "m",
          well: Optional[str] = None) -> pd.DataFrame:
    """The files and curves that answer, as `quarl-catalog query`: every one
    of `curves` is in the file (a mnemonic stands for its family: GR finds
    GRC and SGR; so does the family's name, gamma_ray), its data covers `depth` = (FROM, TO) in `unit` (m or ft),
    and its WELL or UWI matches the glob `well` (*, ?, no case). ValueError
    for a question that cannot be asked (an unknown unit, FROM above TO)."""
    if isinstance(curves, str):
        curves = [curves]
    sql, params = _quarl.build_query(list(curves), depth, unit, well)
    return _frame(db, sql, params)


class Problems(NamedTuple):
    """The files whose read failed (with result and first note), and the
    notes by kind (kind, how many, in how many files)."""
    files: pd.DataFrame
    note_kinds: pd.DataFrame


def problems(db: PathLike) -> Problems:
    """What `quarl-catalog problems` shows, as two DataFrames."""
    return Problems(_frame(db, *_quarl.problem_files_query()),
                    _frame(db, *_quarl.note_kinds_query()))


def files(db: PathLike) -> pd.DataFrame:
    """The `files` table: one row per file, by path."""
    return _frame(db, "SELECT * FROM files ORDER BY path")


def curves(db: PathLike) -> pd.DataFrame:
    """Every curve of every file, with the file's path, in file order."""
    return _frame(db, "SELECT f.path, c.section, c.position, c.mnemonic, c.unit, c.description, "
                      "c.api_code, c.first_depth, c.last_depth, c.depth_unit "
                      "FROM curves c JOIN files f ON f.id = c.file_id "
                      "ORDER BY f.path, c.rowid")


def wells(db: PathLike) -> pd.DataFrame:
    """The view `well_summary`: one row per file with WELL, UWI, COMP, STRT,
    STOP, NULL and the other usual Well lines as columns."""
    return _frame(db, "SELECT * FROM well_summary ORDER BY path")
