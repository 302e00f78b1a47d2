"""The viewer in headless chromium, driven by Selenium: the site served on
127.0.0.1, corpus files picked, their header, notes and plot checked, a bad
file shown with its result, a download read back, and no request but the
site's own. QUARL_SITE is the built site; with QUARL_SCREENSHOTS set to a
folder the screenshots of the README go there."""
import http.server
import os
import shutil
import sys
import tempfile
import threading
import time
import unittest
from functools import partial

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.common.exceptions import NoSuchElementException, StaleElementReferenceException
from selenium.webdriver.support.ui import WebDriverWait

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))
SITE = os.environ["QUARL_SITE"]
CORPUS = os.path.realpath(os.path.join(ROOT, "..", "shared", "corpus"))
SAMPLE = os.path.join(ROOT, "examples", "data", "sample_las20.las")
SAMPLE3 = os.path.join(ROOT, "examples", "data", "sample_las30.las")


class QuietHandler(http.server.SimpleHTTPRequestHandler):
    extensions_map = {**http.server.SimpleHTTPRequestHandler.extensions_map,
                      ".mjs": "text/javascript", ".js": "text/javascript", ".wasm": "application/wasm"}

    def log_message(self, *args):
        pass


class IsolatingHandler(QuietHandler):
    """Serves pages cross-origin isolated, as quarl.mjs's module with threads
    needs them."""

    def end_headers(self):
        self.send_header("Cross-Origin-Opener-Policy", "same-origin")
        self.send_header("Cross-Origin-Embedder-Policy", "require-corp")
        super().end_headers()


def chromium(scratch, width="1500,1100"):
    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    for flag in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
                 "--disable-background-networking", "--disable-component-update", "--disable-sync",
                 "--disable-dev-shm-usage", "--window-size=" + width,
                 "--user-data-dir=" + os.path.join(scratch, "profile")):
        options.add_argument(flag)
    return options


class Viewer(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), partial(QuietHandler, directory=SITE))
        threading.Thread(target=cls.server.serve_forever, daemon=True).start()
        cls.origin = "http://127.0.0.1:%d" % cls.server.server_address[1]
        cls.scratch = tempfile.mkdtemp(prefix="quarl-browser-")
        cls.downloads = os.path.join(cls.scratch, "downloads")
        os.mkdir(cls.downloads)
        options = chromium(cls.scratch)
        options.add_experimental_option("prefs", {"download.default_directory": cls.downloads,
                                                  "download.prompt_for_download": False})
        options.set_capability("goog:loggingPrefs", {"performance": "ALL", "browser": "ALL"})
        cls.driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
        cls.driver.get(cls.origin + "/index.html")

    @classmethod
    def tearDownClass(cls):
        cls.driver.quit()
        cls.server.shutdown()
        shutil.rmtree(cls.scratch, ignore_errors=True)

    def wait(self, condition, timeout=60):
        # The page replaces what it draws: an element found a moment ago may
        # be gone when it is looked at, and the condition is then asked again.
        ignored = (NoSuchElementException, StaleElementReferenceException)
        return WebDriverWait(self.driver, timeout, ignored_exceptions=ignored).until(
            lambda d: condition())

    def pick(self, *paths):
        count = len(self.driver.find_elements(By.CSS_SELECTOR, "#tabs button"))
        self.driver.find_element(By.ID, "files").send_keys("\n".join(paths))
        self.wait(lambda: len(self.driver.find_elements(By.CSS_SELECTOR, "#tabs button")) == count + len(paths)
                  and not self.driver.find_elements(By.XPATH, "//main/p[starts-with(., 'reading ')]")
                  and self.driver.find_elements(By.CSS_SELECTOR, "#well, #error"))

    def cell(self, table, mnemonic):
        return self.driver.find_element(By.CSS_SELECTOR, '#%s tr[data-mnemonic="%s"] td.value' % (table, mnemonic)).text

    def screenshot(self, name):
        folder = os.environ.get("QUARL_SCREENSHOTS")
        if folder:
            self.driver.save_screenshot(os.path.join(folder, name))

    def test_1_header_curves_notes_and_plot(self):
        self.pick(SAMPLE)
        self.assertEqual(self.cell("well", "WELL"), "NRE HOLLIS CREEK 7-22-41-3")
        self.assertEqual(self.cell("params", "BHT"), "68.0000")
        dt = self.driver.find_element(By.CSS_SELECTOR, '#curves tr[data-curve="DT"] td.nulls')
        self.assertEqual(dt.text, "6")
        notes = self.driver.find_element(By.ID, "notes")
        self.assertIn("LASNOTE_SECTION_SKIPPED", notes.get_attribute("innerHTML"))
        self.assertNotIn("quarl-check", notes.text)
        self.assertIn("line 35", notes.get_attribute("textContent"))
        svg = self.driver.find_element(By.CSS_SELECTOR, "#plot svg")
        texts = [t.get_attribute("textContent") for t in svg.find_elements(By.CSS_SELECTOR, "text, tspan")]
        for name in ("GR", "ILD", "RHOB", "DEPT"):
            self.assertTrue(any(t.startswith(name) for t in texts), name)
        self.assertGreater(len(svg.find_elements(By.CSS_SELECTOR, "path, polyline")), 5)
        self.screenshot("viewer.png")
        # Zoom in depth: the plot is redrawn over a quarter of the depths.
        before = svg.get_attribute("outerHTML")
        self.driver.find_element(By.XPATH, "//button[.='Zoom in']").click()
        self.wait(lambda: self.driver.find_element(By.CSS_SELECTOR, "#plot svg").get_attribute("outerHTML") != before)
        self.assertEqual(self.driver.find_element(By.ID, "top").get_attribute("value"), "1549.88")

    def test_2_corpus_files(self):
        names = sorted(f for f in os.listdir(CORPUS) if f.lower().endswith(".las"))[:6] if os.path.isdir(CORPUS) else []
        if not names:
            self.skipTest("no corpus at " + CORPUS)
        self.pick(*[os.path.join(CORPUS, n) for n in names])
        count = len(self.driver.find_elements(By.CSS_SELECTOR, "#tabs button"))
        for index in range(count - len(names), count):
            tab = self.driver.find_elements(By.CSS_SELECTOR, "#tabs button")[index]
            name = tab.text
            tab.click()
            # Each file shows its header and log, or its result.
            shown = self.driver.find_elements(By.CSS_SELECTOR, "#well, #error")
            self.assertTrue(shown, name)
            self.assertTrue(self.driver.find_elements(By.CSS_SELECTOR, "#plot svg, #plot-error, #error"), name)

    def test_3_bad_file_then_a_good_one(self):
        bad = os.path.join(self.scratch, "not_a_log.las")
        with open(bad, "wb") as f:
            f.write(b"\x00\x01 this is no LAS file\n")
        self.pick(bad)
        error = self.driver.find_element(By.ID, "error")
        self.assertIn("LASFILE_BAD_FORMAT at line 1", error.text)
        self.screenshot("viewer-error.png")
        self.pick(SAMPLE3)
        self.assertTrue(self.driver.find_elements(By.CSS_SELECTOR, "#plot svg"))
        self.assertIn("3.0", self.driver.find_element(By.CSS_SELECTOR, "main > p").text)

    def test_4_download_las30_and_csv(self):
        self.pick(SAMPLE)
        self.driver.find_element(By.ID, "download-las30").click()
        self.wait(lambda: "sample_las20_las30.las" in self.driver.find_element(By.ID, "written").text)
        self.driver.find_element(By.ID, "download-csv").click()
        las = os.path.join(self.downloads, "sample_las20_las30.las")
        csv = os.path.join(self.downloads, "sample_las20.csv")
        self.wait(lambda: os.path.exists(las) and os.path.exists(csv))
        time.sleep(0.5)
        with open(las, encoding="utf-8") as f:
            text = f.read()
        self.assertRegex(text, r"VERS\.\s+3\.0")
        self.assertIn("NRE HOLLIS CREEK 7-22-41-3", text)
        with open(csv, encoding="utf-8") as f:
            lines = f.read().splitlines()
        self.assertEqual(lines[0], "DEPT,GR,CALI,SP,RHOB,NPHI,DT,ILD,ILM")
        self.assertEqual(len(lines), 401)

    def test_5_no_request_leaves_the_site(self):
        import json
        urls = []
        for entry in self.driver.get_log("performance"):
            message = json.loads(entry["message"])["message"]
            if message["method"] == "Network.requestWillBeSent":
                urls.append(message["params"]["request"]["url"])
        self.assertTrue(urls)
        # The browser's own pages (chrome://) stay inside it; any request
        # over the network must go to the site.
        network = [u for u in urls if u.split(":", 1)[0] in ("http", "https", "ws", "wss", "ftp")]
        self.assertIn(self.origin + "/worker.js", network)
        foreign = [u for u in network if not u.startswith(self.origin + "/")]
        self.assertEqual(foreign, [])
        errors = [e for e in self.driver.get_log("browser") if e["level"] == "SEVERE"]
        self.assertEqual(errors, [])


class ThreadsInAnIsolatedPage(unittest.TestCase):
    """A cross-origin isolated page loads the module with threads: every
    corpus file (or the samples) reads with it, strictly and leniently, as
    with the module without threads, the read going on while the file
    arrives; and the viewer works there."""

    def test_reads_agree_with_the_module_without_threads(self):
        scratch = tempfile.mkdtemp(prefix="quarl-threads-")
        serve = os.path.join(scratch, "serve")
        os.mkdir(serve)
        os.symlink(SITE, os.path.join(serve, "site"))
        shutil.copy(os.path.join(ROOT, "web", "tests", "threads_page.html"), serve)
        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), partial(IsolatingHandler, directory=serve))
        threading.Thread(target=server.serve_forever, daemon=True).start()
        driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=chromium(scratch))
        try:
            driver.get("http://127.0.0.1:%d/threads_page.html" % server.server_address[1])
            ready = WebDriverWait(driver, 60).until(lambda d: d.execute_script("return window.ready"))
            self.assertTrue(ready["isolated"])
            self.assertGreaterEqual(ready["threads"], 1)
            files = [SAMPLE, SAMPLE3]
            if os.path.isdir(CORPUS):
                files += [os.path.join(CORPUS, f) for f in sorted(os.listdir(CORPUS))]
            driver.find_element(By.ID, "files").send_keys("\n".join(files))
            result = WebDriverWait(driver, 600).until(lambda d: d.execute_script("return window.result"))
            self.assertEqual(result["files"], len(files))
            self.assertEqual(result["differ"], [])
            # Bad files among them fail alike with both modules.
            if len(files) > 2:
                self.assertGreater(result["errors"], 0)
            # The viewer in the isolated page: its worker loads the module
            # with threads, whose own workers start inside it.
            driver.get("http://127.0.0.1:%d/site/index.html" % server.server_address[1])
            driver.find_element(By.ID, "files").send_keys(SAMPLE)
            WebDriverWait(driver, 60).until(lambda d: d.find_elements(By.CSS_SELECTOR, "#well, #error"))
            self.assertFalse(driver.find_elements(By.CSS_SELECTOR, "#error"))
            WebDriverWait(driver, 60).until(lambda d: d.find_elements(By.CSS_SELECTOR, "#plot svg"))
        finally:
            driver.quit()
            server.shutdown()
            server.server_close()
            shutil.rmtree(scratch, ignore_errors=True)


if __name__ == "__main__":
    unittest.main(verbosity=2)
