// The viewer's worker: reads each file with quarl.mjs off the page's thread,
// keeps the documents, and answers for their plots and downloads.
import { load } from "./quarl.mjs";

const quarlReady = load();
const documents = new Map();

// The bytes of a File, with progress reports while they come in.
async function bytesOf(id, file) {
  const bytes = new Uint8Array(file.size);
  const reader = file.stream().getReader();
  let offset = 0, reported = 0;
  for (;;) {
    const { done, value } = await reader.read();
    if (done) break;
    bytes.set(value, offset);
    offset += value.length;
    if (offset - reported > (1 << 20)) {
      reported = offset;
      postMessage({ type: "progress", id, done: offset, total: file.size, stage: "loading" });
    }
  }
  return bytes.subarray(0, offset);
}

function summary(doc) {
  return {
    name: doc.name, version: doc.version, las3: doc.las3, wrapped: doc.wrapped, null: doc.null,
    well: doc.well, params: doc.params, sections: doc.sections, curveNames: doc.curveNames,
    curves: doc.curves, notes: doc.notes, notesSummary: doc.notesSummary,
  };
}

function plotOf(doc, options) {
  try {
    return { svg: doc.plot(options).svg };
  } catch (e) {
    return { error: e.message };
  }
}

const handlers = {
  async open({ id, file, strict }) {
    const bytes = await bytesOf(id, file);
    postMessage({ type: "progress", id, done: bytes.length, total: bytes.length, stage: "reading" });
    const quarl = await quarlReady;
    const started = performance.now();
    const doc = quarl.read(bytes, { name: file.name, strict });
    const ms = performance.now() - started;
    documents.set(id, doc);
    return { document: summary(doc), ms, plot: plotOf(doc, {}) };
  },
  plot({ id, options }) {
    return { plot: plotOf(documents.get(id), options) };
  },
  download({ id, format }) {
    const doc = documents.get(id);
    return { text: format === "csv" ? doc.toCsv() : doc.toLas(format), format };
  },
  close({ id }) {
    documents.get(id)?.free();
    documents.delete(id);
    return {};
  },
};

onmessage = async (event) => {
  const message = event.data;
  try {
    const answer = await handlers[message.type](message);
    postMessage({ type: message.type, id: message.id, request: message.request, ...answer });
  } catch (e) {
    postMessage({
      type: message.type, id: message.id, request: message.request,
      error: { message: e.message, result: e.result, line: e.line, notes: e.notes },
    });
  }
};
