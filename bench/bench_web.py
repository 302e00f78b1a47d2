"""quarl.mjs in headless Chromium against las-js, the JavaScript reader web
developers use, and against the native reader.

A generated LAS 2.0 file of 170,000 rows of 25 curves (about 43 MB, made by
bench_read --make) is picked in one page and read from its File by both, in
turns, best of six each: quarl.mjs strictly and leniently (readFile: the
File streamed into the module's memory, then the read), las-js 3.4.2 (new
Las(file), then data()). las-js is
installed from npm into a scratch folder by this script alone, never kept.
Then the ratios: las-js over quarl.mjs, and quarl.mjs over the native strict
read of the same file (bench_read --time).

    tools/build-web.sh build/web-site
    cmake -S . -B build -DQUARL_BUILD_BENCH=ON && cmake --build build --target bench_read
    /usr/bin/python3 bench/bench_web.py [--site build/web-site] [--bench-read build/bench/bench_read]
                                        [--rows 170000]
"""
import argparse
import http.server
import json
import os
import shutil
import subprocess
import sys
import tempfile
import threading
from functools import partial

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), ".."))
PEER = "las-js@3.4.2"


class QuietHandler(http.server.SimpleHTTPRequestHandler):
    extensions_map = {**http.server.SimpleHTTPRequestHandler.extensions_map,
                      ".mjs": "text/javascript", ".js": "text/javascript", ".wasm": "application/wasm"}
    isolated = False

    def end_headers(self):
        # A cross-origin isolated page may share memory with its workers.
        if self.isolated:
            self.send_header("Cross-Origin-Opener-Policy", "same-origin")
            self.send_header("Cross-Origin-Embedder-Policy", "require-corp")
        super().end_headers()

    def log_message(self, *args):
        pass


class IsolatingHandler(QuietHandler):
    isolated = True


def install_peer(scratch):
    """las-js from npm into the scratch folder; its dist folder, or None."""
    prefix = os.path.join(scratch, "npm")
    try:
        subprocess.run(["npm", "install", "--no-save", "--no-audit", "--no-fund", "--prefix", prefix, PEER],
                       check=True, capture_output=True, timeout=300)
    except (OSError, subprocess.SubprocessError) as error:
        print("las-js could not be installed (%s); quarl.mjs alone" % error)
        return None
    return os.path.join(prefix, "node_modules", "las-js", "dist")


def browser(scratch):
    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    for flag in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
                 "--disable-background-networking", "--disable-component-update", "--disable-sync",
                 "--disable-dev-shm-usage", "--user-data-dir=" + os.path.join(scratch, "profile")):
        options.add_argument(flag)
    return webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)


def native_time(bench_read, path, threads):
    return float(subprocess.run([bench_read, "--time", path, str(threads)], check=True, capture_output=True,
                                text=True).stdout)


def run_page(scratch, serve, handler, path):
    """The bench page served by `handler`, the file picked; its result."""
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), partial(handler, directory=serve))
    threading.Thread(target=server.serve_forever, daemon=True).start()
    driver = browser(scratch)
    try:
        driver.get("http://127.0.0.1:%d/bench.html" % server.server_address[1])
        WebDriverWait(driver, 30).until(lambda d: d.execute_script("return document.readyState") == "complete")
        driver.find_element(By.ID, "file").send_keys(path)
        return WebDriverWait(driver, 900).until(lambda d: d.execute_script("return window.benchResult"))
    finally:
        driver.quit()
        server.shutdown()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--site", default=os.path.join(ROOT, "build", "web-site"))
    parser.add_argument("--bench-read", default=os.path.join(ROOT, "build", "bench", "bench_read"))
    parser.add_argument("--rows", type=int, default=170000)
    args = parser.parse_args()
    scratch = tempfile.mkdtemp(prefix="quarl-bench-web-")
    try:
        path = os.path.join(scratch, "bench.las")
        subprocess.run([args.bench_read, "--make", "0", str(args.rows), path], check=True)
        megabytes = os.path.getsize(path) / 1e6
        native = native_time(args.bench_read, path, 1)
        serve = os.path.join(scratch, "serve")
        os.mkdir(serve)
        os.symlink(os.path.abspath(args.site), os.path.join(serve, "site"))
        for name in ("bench.html", "bench.js"):
            shutil.copy(os.path.join(ROOT, "bench", "web", name), serve)
        peer = install_peer(scratch)
        if peer:
            os.symlink(peer, os.path.join(serve, "peer"))
        print("%.1f MB LAS 2.0, %d rows of 25 curves; best of 6 in headless Chromium" % (megabytes, args.rows))
        print("  native strict read, 1 thread     %8.3f s" % native)
        for handler, how in ((QuietHandler, "any web server"),
                             (IsolatingHandler, "a cross-origin isolated page")):
            result = run_page(scratch, serve, handler, path)
            best = result["best"]
            threads = result["threads"]
            print("served as %s (%d thread%s, WebAssembly SIMD: %s):"
                  % (how, threads, "" if threads == 1 else "s", "yes" if result["simd"] else "no"))
            same = native if threads == 1 else native_time(args.bench_read, path, threads)
            if threads > 1:
                print("  native strict read, %d threads    %8.3f s" % (threads, same))
            for kind in ("strict", "lenient"):
                print("  quarl.mjs %-22s %8.3f s  %.2fx the native read"
                      % (kind, best[kind] / 1000, best[kind] / 1000 / same))
            if best.get("peer"):
                print("  las-js 3.4.2                     %8.3f s  %.1fx quarl.mjs (strict), %.1fx (lenient)"
                      % (best["peer"] / 1000, best["peer"] / best["strict"], best["peer"] / best["lenient"]))
            print("  rows x curves read: %s" % json.dumps(result["shape"]))
    finally:
        shutil.rmtree(scratch, ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())
