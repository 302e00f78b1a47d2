// The viewer's worker: reads each file with quarl.mjs off the page's thread,
// keeps the documents, and answers for their plots and downloads.
import { load } from "./quarl.mjs";

const quarlReady = load();
const documents = new Map();
// Files from this size on report how far their read is.
const READ_PROGRESS_FROM = 256 << 20;

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
    const quarl = await quarlReady;
    let reported = 0;
    const onProgress = (done, total) => {
      if (done - reported < (1 << 20) && done < total) return;
      reported = done;
      postMessage({ type: "progress", id, done, total, stage: "loading" });
    };
    const started = performance.now();
    let percentShown = -1;
    const onReadProgress = (percent) => {
      if (percent < percentShown + 5 && percent < 100) return;
      percentShown = percent;
      postMessage({ type: "progress", id, done: percent, total: 100, stage: "reading" });
    };
    // The read's own progress is heard for large files only: a read that
    // reports it goes line by line, and a smaller file reads in less time
    // than a report takes to show.
    const reportRead = file.size >= READ_PROGRESS_FROM;
    const doc = await quarl.readFile(file, { strict, onProgress, onReadProgress: reportRead ? onReadProgress : undefined });
    const ms = performance.now() - started;
    documents.set(id, doc);
    return { document: summary(doc), ms, plot: plotOf(doc, {}) };
  },
  plot({ id, options }) {
    return { plot: plotOf(documents.get(id), options) };
  },
  download({ id, format }) {
    const doc = documents.get(id);
    if (format === "csv") return { text: doc.toCsv(), format, repairs: [] };
    return { ...doc.toLasWithRepairs(format), format };
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
