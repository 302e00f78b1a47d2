"""The Python package against the C++ reader, side by side in one run.

On a LAS 2.0 file of 400,000 rows of 25 curves (about 100 MB, made by the
package's writer), best of several runs each, in turns:
  C++       CLasReader::Open alone (lenient, as quarl.read by default),
            called from the native module
  arrays    quarl.read(path) and every curve as a numpy array
  DataFrame quarl.read(path).df()
  bytes     quarl.read(data).df() on the file's bytes, already in memory
and the peak memory that each adds to its process, measured in a child
process per kind, against the size of the values (rows x curves x 8 bytes).
Then quarl.headers([path]) against the full read (quarl.read and every
curve as an array) of the same file, as a ratio: a headers-only read takes
the first and the last data row and passes over the rows between. Then
read_many over a folder of smaller files with one and with two workers.

    PYTHONPATH=build/python /usr/bin/python3 bench/bench_python.py [rows] [--keep DIR]
                                                                 [--headers]
(--headers: only the header table against the full read)
"""
import argparse
import os
import resource
import tempfile
import time

import numpy as np
import pandas as pd

import quarl
from quarl import _quarl

CURVES = 25


def make_file(path, rows, seed=1):
    """A LAS 2.0 file of `rows` rows: depth and 24 curves with four decimals."""
    generator = np.random.default_rng(seed)
    depth = 1000.0 + 0.125 * np.arange(rows)
    values = np.round(generator.uniform(0, 10000, (rows, CURVES - 1)), 4)
    frame = pd.DataFrame(values, columns=[f"C{i}" for i in range(1, CURVES)],
                         index=pd.Index(depth, name="DEPT"))
    quarl.write(path, quarl.from_df(frame, units={"DEPT": "M"}))


def read_arrays(path):
    las = quarl.read(path)
    return [las[i] for i in range(len(las.keys))]


def read_frame(path):
    return quarl.read(path).df()


_BYTES = {}


def read_bytes_frame(path):
    """The same read from the file's bytes, which are in memory beforehand."""
    return quarl.read(_BYTES[path]).df()


KINDS = {
    # The same lenient reading as quarl.read's default.
    "C++": lambda path: _quarl._time_native_read(path, True),
    "arrays": read_arrays,
    "DataFrame": read_frame,
    "bytes": read_bytes_frame,
}


def timed(kind, path):
    """Wall time and CPU time of one read; for C++ the wall time is the
    library's own measure of Open."""
    start, cpu = time.perf_counter(), time.process_time()
    result = KINDS[kind](path)
    elapsed, cpu = time.perf_counter() - start, time.process_time() - cpu
    return (result if kind == "C++" else elapsed), cpu


def rss_bytes():
    with open("/proc/self/statm") as statm:
        return int(statm.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")


def peak_added(kind, path):
    """Bytes by which one read of `kind` raises the peak of a fresh child."""
    read_end, write_end = os.pipe()
    pid = os.fork()
    if pid == 0:
        before = rss_bytes()
        KINDS[kind](path)
        peak = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss * 1024
        os.write(write_end, str(peak - before).encode())
        os._exit(0)
    os.close(write_end)
    with os.fdopen(read_end) as pipe:
        added = int(pipe.read())
    os.waitpid(pid, 0)
    return added


def headers_against_full(path, runs):
    """Best wall time of quarl.headers([path]) and of the full read."""
    header = min(timed_call(lambda: quarl.headers([path])) for _ in range(runs))
    full = min(timed_call(lambda: read_arrays(path)) for _ in range(runs))
    table = quarl.headers([path])
    print(f"\nheaders() {header * 1000:.2f} ms, full read {full * 1000:.1f} ms: "
          f"ratio {header / full:.2%} (first {table['first'][0]}, last {table['last'][0]})")


def timed_call(call):
    start = time.perf_counter()
    call()
    return time.perf_counter() - start


def read_many_time(paths, workers):
    """Wall time and CPU time of the process for one read_many pass."""
    start, cpu = time.perf_counter(), time.process_time()
    for las in quarl.read_many(paths, workers=workers):
        assert isinstance(las, quarl.LasFile)
    return time.perf_counter() - start, time.process_time() - cpu


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("rows", nargs="?", type=int, default=400_000)
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--files", type=int, default=8, help="files for read_many")
    parser.add_argument("--keep", help="folder for the files, kept between runs")
    parser.add_argument("--headers", action="store_true",
                        help="only the header table against the full read")
    args = parser.parse_args()
    folder = args.keep or tempfile.mkdtemp(prefix="quarl_bench_")
    os.makedirs(folder, exist_ok=True)
    big = os.path.join(folder, f"big_{args.rows}.las")
    if not os.path.exists(big):
        make_file(big, args.rows)
    size = os.path.getsize(big)
    with open(big, "rb") as handle:
        _BYTES[big] = handle.read()
    values = args.rows * CURVES * 8
    print(f"{big}: {size / 1e6:.1f} MB, {args.rows} rows of {CURVES} curves, "
          f"values {values / 1e6:.1f} MB")
    if args.headers:
        headers_against_full(big, args.runs)
        return

    best = {kind: float("inf") for kind in KINDS}
    best_cpu = dict(best)
    for _ in range(args.runs):
        for kind in KINDS:
            wall, cpu = timed(kind, big)
            best[kind], best_cpu[kind] = min(best[kind], wall), min(best_cpu[kind], cpu)
    print(f"\n{'read':<10} {'wall s':>7} {'MB/s':>5} {'x C++':>6} {'CPU s':>6} {'x C++':>6} "
          f"{'peak added':>11} {'x values':>9}   (best of {args.runs})")
    for kind in KINDS:
        added = peak_added(kind, big)
        print(f"{kind:<10} {best[kind]:7.3f} {size / 1e6 / best[kind]:5.0f} "
              f"{best[kind] / best['C++']:6.2f} {best_cpu[kind]:6.3f} "
              f"{best_cpu[kind] / best_cpu['C++']:6.2f} {added / 1e6:8.1f} MB {added / values:9.2f}")

    print(f"bytes against DataFrame (the same read from a path): "
          f"{best['bytes'] / best['DataFrame']:.2f}")
    headers_against_full(big, args.runs)

    rows = max(args.rows // args.files, 1000)
    paths = []
    for i in range(args.files):
        paths.append(os.path.join(folder, f"many_{rows}_{i}.las"))
        if not os.path.exists(paths[-1]):
            make_file(paths[-1], rows, seed=i + 2)
    one = min(read_many_time(paths, 1) for _ in range(args.runs))
    two = min(read_many_time(paths, 2) for _ in range(args.runs))
    print(f"\nread_many, {args.files} files of {rows} rows, best wall time (CPU time of that run):"
          f"\n  1 worker {one[0]:.3f} s ({one[1]:.2f} s), 2 workers {two[0]:.3f} s ({two[1]:.2f} s),"
          f" ratio {two[0] / one[0]:.2f}")
    print(f"{os.cpu_count()} CPUs, load average {os.getloadavg()[0]:.1f}: wall times are only "
          "comparable on an otherwise idle machine")


if __name__ == "__main__":
    main()
