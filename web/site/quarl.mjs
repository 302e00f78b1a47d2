// quarl.mjs: reads LAS 2.0 and 3.0 files in a page, a worker or node, with
// quarl's reader compiled to WebAssembly, and writes them back.
//
//   import { load } from "./quarl.mjs";
//   const quarl = await load();
//   const doc = quarl.read(bytes);          // a Uint8Array; {strict: true}
//   doc.well.WELL.value; doc.curve("GR");   // a Float64Array, NULL as NaN
//   doc.free();

// readFile asks for the file in pieces of this size, this many at a time.
const PIECE_BYTES = 16 << 20;
const PIECES_AT_ONCE = 4;

const isNode = typeof process === "object" && process.versions != null && process.versions.node != null;

// The module's binary: handed in under node, whose fetch refuses file
// paths; a page and a worker fetch it beside this file.
async function coreOptions(options) {
  if (options.wasmBinary) return { wasmBinary: options.wasmBinary };
  if (!isNode) return {};
  const { readFile } = await import("node:fs/promises");
  return { wasmBinary: await readFile(new URL("./quarl_core.wasm", import.meta.url)) };
}

// The module with threads needs memory shared with workers, which a page
// has only when it is cross-origin isolated (served with the headers
// Cross-Origin-Opener-Policy: same-origin and Cross-Origin-Embedder-Policy:
// require-corp); elsewhere the module reads on one thread.
function wantsThreads(options) {
  if (options.threads === false || options.threads === 1 || options.wasmBinary || isNode) return false;
  return globalThis.crossOriginIsolated === true && typeof SharedArrayBuffer === "function";
}

// A failed read: an Error whose message names the result and the line, with
// both as properties and the document's notes.
export class LasReadError extends Error {
  constructor(result, line, notes) {
    super(`${result} at line ${line}`);
    this.name = "LasReadError";
    this.result = result;
    this.line = line;
    this.notes = notes;
  }
}

class LasDocument {
  constructor(core, handle, name) {
    this._core = core;
    this.name = name;
    this._handle = handle;
    const header = handle.header();
    this.version = header.version;
    this.las3 = header.las3;
    this.wrapped = header.wrapped;
    this.delimiter = header.delimiter;
    this.null = header.null;
    this.well = header.well;
    this.params = header.params;
    this.sections = header.sections;
    this.curveNames = handle.curveList(-1);
    this.notes = handle.notes();
    this.notesSummary = handle.notesSummary();
  }

  // The facts of each curve of the log data (unit, description, min, max,
  // NULLs), worked out on first use.
  get curves() {
    if (!this._curves) this._curves = this._live().curveInfo(-1);
    return this._curves;
  }

  _live() {
    if (!this._handle) throw new Error("the document was freed");
    return this._handle;
  }

  // The values of a curve of the log data (or of data section `section`,
  // by its index in `sections`) as a view of the module's memory, NULL as
  // NaN: no copy. Null for a text curve or an unknown name. Valid until
  // free(); copy it (slice()) to keep it longer.
  curve(name, section = -1) {
    return this._live().curve(section, name);
  }

  // Names and facts of the curves of data section `section`.
  curveNamesOf(section) {
    return this._live().curveList(section);
  }
  curveInfoOf(section) {
    return this._live().curveInfo(section);
  }

  // The document as LAS text ("2.0" or "3.0"), written by quarl's writer in
  // repair mode: what the version cannot hold is changed, and each change is
  // in `repairs` of toLasWithRepairs.
  // `name` is the file name the text gives in its first comment lines.
  toLas(version = "2.0", name = this.name) {
    return this.toLasWithRepairs(version, name).text;
  }
  toLasWithRepairs(version = "2.0", name = this.name) {
    if (version !== "2.0" && version !== "3.0") throw new Error(`no LAS version ${version}`);
    const out = this._live().toLas(version === "3.0", name);
    if (out.error !== undefined) throw new Error(`writing LAS ${version} failed: ${out.error}`);
    return { text: out.text, repairs: out.repairs };
  }

  // A data section (default: the log data) as CSV, NULL as an empty field.
  toCsv(section = -1) {
    return this._live().csv(section);
  }

  // The log plot as quarl-plot draws it, as SVG text. options: tracks
  // ([["GR", "SP"], ["ILD", "ILM:log"]]), top and bottom depth, height and
  // trackWidth in pixels.
  plot(options = {}) {
    const out = this._live().plot(options);
    if (out.error !== undefined) throw new Error(`plot: ${out.error}`);
    return { svg: out.svg, notes: out.notes };
  }

  free() {
    if (!this._handle) return;
    this._handle.delete();
    this._handle = null;
  }
}

class Quarl {
  constructor(core, threaded) {
    this._core = core;
    // How many threads a read takes by default: every core with the module
    // that has threads, else one. read(bytes, {threads: n}) asks for n.
    this.threads = threaded ? Math.max(1, globalThis.navigator?.hardwareConcurrency || 1) : 1;
    this._threaded = threaded;
    // The version of the library built into the module ("0.2.0").
    this.version = core.version();
  }

  // Reads the bytes of a LAS file: leniently by default, exactly by the
  // format's rules with {strict: true}. options.onReadProgress(percent)
  // hears how far the read is, at each whole percent. Throws LasReadError
  // when the read fails.
  read(bytes, options = {}) {
    if (!(bytes instanceof Uint8Array)) throw new TypeError("read wants a Uint8Array");
    const pointer = this._allocate(bytes.length);
    try {
      this._heap().set(bytes, pointer);
      return this._readAt(pointer, bytes.length, options);
    } finally {
      this._core._free(pointer);
    }
  }

  // Reads a File or Blob as read() reads bytes. The file comes into the
  // module's memory in pieces, a few asked for at once (the browser reads
  // them side by side), each copied to its place as it arrives: no copy of
  // the whole file on the side. options.onProgress(done, total) hears of
  // each piece, and options.onReadProgress(percent), as with read(), of the
  // read after it.
  async readFile(file, options = {}) {
    // With threads, the read runs on a thread of its own while the pieces
    // come in; a read that reports its progress stays on this thread.
    if (this._threaded && typeof options.onReadProgress !== "function") return this._readArriving(file, options);
    const total = file.size;
    const pointer = this._allocate(total);
    try {
      await this._fetchPieces(file, pointer, options, null);
      return this._readAt(pointer, total, { name: file.name, ...options });
    } finally {
      this._core._free(pointer);
    }
  }

  // The pieces of `file` into the module's memory at `pointer`, a few asked
  // for at once (the browser reads them side by side); `arrived(bytes)`
  // hears of each.
  async _fetchPieces(file, pointer, options, arrived) {
    const total = file.size;
    const pending = [];
    let asked = 0;
    const ask = () => {
      if (asked >= total) return;
      const end = Math.min(total, asked + PIECE_BYTES);
      const data = file.slice(asked, end).arrayBuffer();
      data.catch(() => {});  // a piece left waiting when an earlier one failed
      pending.push({ at: asked, bytes: end - asked, data });
      asked = end;
    };
    for (let i = 0; i < PIECES_AT_ONCE; ++i) ask();
    let done = 0;
    while (pending.length > 0) {
      const piece = pending.shift();
      const value = new Uint8Array(await piece.data);
      if (value.length !== piece.bytes) throw new Error("the file changed while it was read");
      ask();
      this._heap().set(value, pointer + piece.at);  // the view is fetched again: memory may grow
      done += value.length;
      if (arrived) arrived(done);
      if (options.onProgress) options.onProgress(done, total);
    }
  }

  // readFile with the module that has threads: the read starts at once on
  // a thread of its own and takes each piece as it arrives.
  async _readArriving(file, options) {
    const total = file.size;
    const name = file.name || "";
    const pointer = this._allocate(total);
    const handle = new this._core.Document();
    let code;
    try {
      handle.startRead(pointer, total, !!options.strict, name, this._threadsOf(options));
      try {
        await this._fetchPieces(file, pointer, options, (done) => handle.arrived(done));
      } catch (e) {
        handle.giveUp();
        await this._whenDone(handle);
        handle.finishRead();
        throw e;
      }
      await this._whenDone(handle);
      code = handle.finishRead();
    } catch (e) {
      handle.delete();
      throw e;
    } finally {
      this._core._free(pointer);
    }
    return this._documentOf(handle, code, name);
  }

  // Waits, without blocking the page, until the read of `handle` ends.
  async _whenDone(handle) {
    const flag = new Int32Array(this._core.wasmMemory.buffer, handle.doneFlag(), 1);
    while (Atomics.load(flag, 0) === 0) {
      if (typeof Atomics.waitAsync === "function") {
        const wait = Atomics.waitAsync(flag, 0, 0);
        if (wait.async) await wait.value;
      } else {
        await new Promise((resolve) => setTimeout(resolve, 1));
      }
    }
  }

  _threadsOf(options) {
    return options.threads === undefined ? this.threads : Math.max(0, options.threads | 0);
  }

  // A document for a read that ended with `code`, or its LasReadError.
  _documentOf(handle, code, name) {
    if (code !== 0) {
      const error = new LasReadError(handle.result(), handle.line(), handle.notes());
      handle.delete();
      throw error;
    }
    return new LasDocument(this._core, handle, name);
  }

  // The module's memory as bytes, as it is now. Shared memory that grew
  // (the module with threads) has a new buffer that HEAPU8 may not show
  // yet; the module without threads keeps HEAPU8 up to date itself.
  _heap() {
    const memory = this._core.wasmMemory;
    const heap = this._core.HEAPU8;
    return !memory || heap.buffer === memory.buffer ? heap : new Uint8Array(memory.buffer);
  }

  _allocate(size) {
    const pointer = this._core._malloc(Math.max(size, 1));
    if (!pointer) throw new LasReadError("LASFILE_OUT_OF_MEMORY", 0, []);
    return pointer;
  }

  _readAt(pointer, size, options) {
    const handle = new this._core.Document();
    // What the caller's function throws stops the read and is thrown again
    // here; it never crosses the module's frames.
    let thrown = null;
    const listener = options.onReadProgress;
    const report = typeof listener !== "function" ? undefined : (percent) => {
      if (thrown) return true;  // the reader's last report, after the stop
      try {
        listener(percent);
        return false;
      } catch (e) {
        thrown = { error: e };
        return true;
      }
    };
    const code = handle.read(pointer, size, !!options.strict, options.name || "", report, this._threadsOf(options));
    if (thrown) {
      handle.delete();
      throw thrown.error;
    }
    return this._documentOf(handle, code, options.name || "");
  }
}

// Loads the WebAssembly module once; options.wasmBinary hands its bytes in.
// options.threads: false for the module without threads even where the
// page could have them.
export async function load(options = {}) {
  if (wantsThreads(options)) {
    try {
      const { default: create } = await import("./quarl_core_threads.mjs");
      return new Quarl(await create({}), true);
    } catch (e) {
      // A site built without it: the module without threads.
    }
  }
  const { default: create } = await import("./quarl_core.mjs");
  return new Quarl(await create(await coreOptions(options)), false);
}
