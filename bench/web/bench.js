// bench_web.py's page: reads the picked File with quarl.mjs and with the
// las-js peer in turns, and leaves the best times in window.benchResult.
import { load } from "./site/quarl.mjs";

const runs = Number(new URLSearchParams(location.search).get("runs") || 6);
const quarl = await load();
// las-js's browser build defines its class as a global (Las; Lasjs in its README).
const Peer = globalThis.Lasjs || globalThis.Las;

async function timeQuarl(file, strict) {
  const start = performance.now();
  const doc = await quarl.readFile(file, { strict });
  const ms = performance.now() - start;
  const rows = doc.curve(doc.curveNames[0]).length, curves = doc.curveNames.length;
  doc.free();
  return { ms, rows, curves };
}

async function timePeer(file) {
  const start = performance.now();
  const las = new Peer(file);
  const data = await las.data();
  const ms = performance.now() - start;
  return { ms, rows: data.length, curves: data[0].length };
}

document.getElementById("file").addEventListener("change", async (event) => {
  const file = event.target.files[0];
  const best = { strict: Infinity, lenient: Infinity, peer: typeof Peer === "function" ? Infinity : null };
  const shape = {};
  for (let run = 0; run < runs; ++run) {
    // Each reader goes first in turn: what the one before leaves to the
    // garbage collector falls on each alike.
    const order = ["strict", "lenient", "peer"];
    for (const kind of order.slice(run % 3).concat(order.slice(0, run % 3))) {
      if (best[kind] === null) continue;
      const r = kind === "peer" ? await timePeer(file) : await timeQuarl(file, kind === "strict");
      best[kind] = Math.min(best[kind], r.ms);
      shape[kind] = [r.rows, r.curves];
    }
  }
  window.benchResult = { best, shape, threads: quarl.threads, simd: WebAssembly.validate(new Uint8Array([0, 97, 115, 109, 1, 0, 0, 0, 1, 5, 1, 96, 0, 1, 123, 3, 2, 1, 0, 10, 10, 1, 8, 0, 65, 0, 253, 15, 253, 98, 11])) };
  document.getElementById("out").textContent = JSON.stringify(window.benchResult, null, 1);
});
