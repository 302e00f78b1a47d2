// The viewer page: files picked or dropped go to the worker, which reads
// them with quarl.mjs; the page shows what comes back. Everything stays in
// this browser.
const worker = new Worker(new URL("./worker.js", import.meta.url), { type: "module" });
const files = [];  // {id, name, doc | error, options, svg, plotError}
let current = null;
let nextId = 1, nextRequest = 1;
const waiting = new Map();

const $ = (id) => document.getElementById(id);

function element(tag, attributes = {}, ...children) {
  const node = document.createElement(tag);
  for (const [key, value] of Object.entries(attributes)) {
    if (key.startsWith("on")) node.addEventListener(key.slice(2), value);
    else if (value !== undefined && value !== null && value !== false) node.setAttribute(key, value);
  }
  for (const child of children.flat())
    if (child !== null && child !== undefined) node.append(child instanceof Node ? child : String(child));
  return node;
}

function ask(message) {
  const request = nextRequest++;
  return new Promise((resolve) => {
    waiting.set(request, resolve);
    worker.postMessage({ ...message, request });
  });
}

worker.onmessage = (event) => {
  const answer = event.data;
  if (answer.type === "progress") {
    showProgress(answer);
    return;
  }
  const resolve = waiting.get(answer.request);
  waiting.delete(answer.request);
  if (resolve) resolve(answer);
};

function showProgress({ done, total, stage }) {
  $("progress").hidden = false;
  $("bar").value = total ? done / total : 1;
  $("progress-text").textContent = stage === "reading" ? `reading: ${Math.round((100 * done) / total)} %`
    : `loading ${(done / 1048576).toFixed(1)} of ${(total / 1048576).toFixed(1)} MB`;
}

async function open(file) {
  const entry = { id: nextId++, name: file.name, options: {} };
  files.push(entry);
  current = entry;
  renderTabs();
  render();
  showProgress({ done: 0, total: file.size, stage: "loading" });
  const answer = await ask({ type: "open", id: entry.id, file });
  $("progress").hidden = true;
  if (answer.error) {
    entry.error = answer.error;
  } else {
    entry.doc = answer.document;
    entry.ms = answer.ms;
    entry.svg = answer.plot.svg;
    entry.plotError = answer.plot.error;
    const depth = entry.doc.curves[0];
    if (depth && Number.isFinite(depth.min)) entry.range = [depth.min, depth.max];
  }
  if (current === entry) render();
  renderTabs();
}

async function openAll(list) {
  for (const file of list) await open(file);
}

function renderTabs() {
  const tabs = $("tabs");
  tabs.replaceChildren(...files.map((entry) =>
    element("button", {
      class: [entry === current ? "on" : "", entry.error ? "bad" : ""].join(" ").trim(),
      title: entry.error ? `${entry.error.result || "error"}` : entry.name,
      onclick: () => { current = entry; renderTabs(); render(); },
    }, entry.name)));
}

function paramTable(params, id) {
  const names = Object.keys(params);
  if (!names.length) return element("p", { class: "hint" }, "none");
  return element("table", { id },
    element("tr", {}, element("th", {}, "Mnemonic"), element("th", {}, "Unit"), element("th", {}, "Value"), element("th", {}, "Description")),
    names.map((name) => element("tr", { "data-mnemonic": name },
      element("td", {}, name), element("td", {}, params[name].unit), element("td", { class: "value" }, params[name].value),
      element("td", {}, params[name].description))));
}

const number = (v) => (Number.isFinite(v) ? String(Number(v.toPrecision(6))) : "");

function curveTable(entry) {
  const chosen = new Set((entry.options.tracks || []).flat().map((n) => n.replace(/:log$/, "")));
  return element("table", { id: "curves" },
    element("tr", {}, ["Plot", "Curve", "Unit", "Description", "Min", "Max", "NULLs"].map((t) => element("th", {}, t))),
    entry.doc.curves.map((c, i) => element("tr", { "data-curve": c.name },
      element("td", {}, i === 0 ? "depth" : element("input", {
        type: "checkbox", checked: chosen.has(c.name), disabled: !c.numeric,
        onchange: (e) => toggleCurve(entry, c.name, e.target.checked),
      })),
      element("td", {}, c.name), element("td", {}, c.unit), element("td", {}, c.description),
      element("td", { class: "num" }, number(c.min)), element("td", { class: "num" }, number(c.max)),
      element("td", { class: "num nulls" }, c.nulls))));
}

// The notes grouped by kind in the order each kind first comes, with their lines.
function noteGroups(notes) {
  const groups = new Map();
  for (const note of notes) {
    if (!groups.has(note.kind)) groups.set(note.kind, { title: note.title, kind: note.kind, notes: [] });
    groups.get(note.kind).notes.push(note);
  }
  return [...groups.values()];
}

function notesView(notes, summary) {
  if (!notes.length) return element("p", { class: "hint", id: "notes" }, "The file reads without notes.");
  return element("div", { class: "notes", id: "notes" },
    summary ? element("p", { class: "summary" }, summary.replace(/; quarl-check .* lists them$/, "")) : null,
    noteGroups(notes).map((group) => element("details", { "data-kind": group.kind },
      element("summary", {}, `${group.notes.length} x ${group.title} (${group.kind})`),
      element("ul", {}, group.notes.map((n) => element("li", {}, n.line ? `line ${n.line}: ${n.message}` : n.message))))));
}

function plotControls(entry) {
  const [low, high] = entry.range || [0, 0];
  const top = entry.options.top ?? low, bottom = entry.options.bottom ?? high;
  const tracksText = (entry.options.tracks || []).map((t) => t.join(",")).join("; ");
  const move = (f) => () => {
    const span = bottom - top;
    setWindow(entry, ...f(top, bottom, span));
  };
  return element("div", { class: "controls" },
    element("label", {}, "Top ", element("input", { type: "number", id: "top", value: number(top), step: "any", onchange: (e) => setWindow(entry, Number(e.target.value), bottom) })),
    element("label", {}, "Bottom ", element("input", { type: "number", id: "bottom", value: number(bottom), step: "any", onchange: (e) => setWindow(entry, top, Number(e.target.value)) })),
    element("button", { onclick: move((t, b, s) => [t + s / 4, b - s / 4]) }, "Zoom in"),
    element("button", { onclick: move((t, b, s) => [t - s / 2, b + s / 2]) }, "Zoom out"),
    element("button", { onclick: move((t, b, s) => [t - s / 2, b - s / 2]) }, "Up"),
    element("button", { onclick: move((t, b, s) => [t + s / 2, b + s / 2]) }, "Down"),
    element("button", { onclick: () => setWindow(entry, low, high) }, "Whole log"),
    element("label", {}, "Tracks ", element("input", {
      type: "text", id: "tracks", value: tracksText, placeholder: "GR,SP; ILD,ILM:log (empty: by curve family)",
      onchange: (e) => setTracks(entry, e.target.value),
    })));
}

function setWindow(entry, top, bottom) {
  const [low, high] = entry.range || [top, bottom];
  entry.options.top = Math.max(Math.min(top, bottom), low);
  entry.options.bottom = Math.min(Math.max(top, bottom), high);
  replot(entry);
}

function setTracks(entry, text) {
  const tracks = text.split(";").map((t) => t.split(",").map((n) => n.trim()).filter(Boolean)).filter((t) => t.length);
  entry.options.tracks = tracks.length ? tracks : undefined;
  replot(entry);
}

function toggleCurve(entry, name, on) {
  let tracks = (entry.options.tracks || []).filter((t) => !(t.length === 1 && t[0].replace(/:log$/, "") === name));
  if (on) tracks = tracks.concat([[name]]);
  entry.options.tracks = tracks.length ? tracks : undefined;
  replot(entry);
}

async function replot(entry) {
  const answer = await ask({ type: "plot", id: entry.id, options: entry.options });
  entry.svg = answer.plot.svg;
  entry.plotError = answer.plot.error;
  if (current === entry) render();
}

// The SVG that the module drew, as elements of this page.
function svgNode(text) {
  const parsed = new DOMParser().parseFromString(text, "image/svg+xml").documentElement;
  if (parsed.nodeName !== "svg") return element("p", { class: "error" }, "the plot could not be shown");
  parsed.querySelectorAll("script, foreignObject").forEach((n) => n.remove());
  return document.importNode(parsed, true);
}

async function download(entry, format) {
  const answer = await ask({ type: "download", id: entry.id, format });
  if (answer.error) {
    alert(`${format}: ${answer.error.message}`);
    return;
  }
  const base = entry.name.replace(/\.[^.]*$/, "");
  const name = format === "csv" ? `${base}.csv` : `${base}_las${format.replace(".", "")}.las`;
  const url = URL.createObjectURL(new Blob([answer.text], { type: format === "csv" ? "text/csv" : "text/plain" }));
  const link = element("a", { href: url, download: name });
  document.body.append(link);
  link.click();
  link.remove();
  setTimeout(() => URL.revokeObjectURL(url), 10000);
  entry.written = { name, repairs: answer.repairs };
  if (current === entry) showWritten(entry);
}

// What the writer changed so that the version could hold the file.
function showWritten(entry) {
  const box = $("written");
  if (!box || !entry.written) return;
  const { name, repairs } = entry.written;
  box.replaceChildren(repairs.length ? `${name}: ${repairs.length} change(s) by the writer` : `${name}: written as read`,
    repairs.length ? element("ul", {}, repairs.map((r) => element("li", {}, r))) : null);
}

function render() {
  const view = $("view");
  const entry = current;
  if (!entry) return;
  if (entry.error) {
    const e = entry.error;
    view.replaceChildren(element("div", { class: "error", id: "error" },
      element("strong", {}, entry.name), ": ",
      e.result ? `${e.result} at line ${e.line}` : e.message),
      e.notes ? notesView(e.notes, "") : null);
    return;
  }
  if (!entry.doc) {
    view.replaceChildren(element("p", { class: "hint" }, `reading ${entry.name}...`));
    return;
  }
  const doc = entry.doc;
  const plot = entry.svg ? element("div", { class: "plot", id: "plot" }, svgNode(entry.svg))
    : element("p", { class: "error", id: "plot-error" }, entry.plotError || "no plot");
  view.replaceChildren(
    element("p", {}, element("strong", {}, doc.well.WELL ? doc.well.WELL.value : entry.name),
      ` - ${entry.name}, LAS ${doc.version}${doc.wrapped ? ", wrapped" : ""}, ${doc.curveNames.length} curves, `,
      `${doc.sections.find((s) => s.logData)?.rows ?? 0} rows, read in ${entry.ms.toFixed(0)} ms`),
    element("div", { class: "downloads" }, "Download as ",
      element("button", { id: "download-las20", onclick: () => download(entry, "2.0") }, "LAS 2.0"),
      element("button", { id: "download-las30", onclick: () => download(entry, "3.0") }, "LAS 3.0"),
      element("button", { id: "download-csv", onclick: () => download(entry, "csv") }, "CSV"),
      element("div", { id: "written", class: "hint" })),
    element("div", { class: "layout" },
      element("div", {},
        element("h2", {}, "Well"), paramTable(doc.well, "well"),
        element("h2", {}, "Parameters"), paramTable(doc.params, "params"),
        element("h2", {}, "Curves"), curveTable(entry),
        element("h2", {}, "Notes"), notesView(doc.notes, doc.notesSummary)),
      element("div", {}, element("h2", {}, "Log"), plotControls(entry), plot)));
  showWritten(entry);
}

$("files").addEventListener("change", (e) => {
  openAll([...e.target.files]);
  e.target.value = "";
});
const drop = $("drop");
window.addEventListener("dragover", (e) => { e.preventDefault(); drop.classList.add("on"); });
drop.addEventListener("dragleave", () => drop.classList.remove("on"));
window.addEventListener("drop", (e) => {
  e.preventDefault();
  drop.classList.remove("on");
  openAll([...e.dataTransfer.files]);
});
