// quarl.mjs under node's test runner: run by web/tests/run-node-tests.sh with
// QUARL_SITE (the built site) and, when built, QUARL_CONVERT (the native
// quarl-convert, whose output the module's toLas must equal byte for byte).
import { test } from "node:test";
import assert from "node:assert/strict";
import { readFileSync, mkdtempSync, rmSync } from "node:fs";
import { execFileSync } from "node:child_process";
import { tmpdir } from "node:os";
import path from "node:path";

const site = process.env.QUARL_SITE;
const root = new URL("../../", import.meta.url).pathname;
const { load, LasReadError } = await import(path.join(site, "quarl.mjs"));
const quarl = await load();
const sample = readFileSync(path.join(root, "examples/data/sample_las20.las"));
const encode = (text) => new TextEncoder().encode(text);

const HEAD = `~Version
 VERS.   2.0 : CWLS LOG ASCII STANDARD - VERSION 2.0
 WRAP.   NO  : ONE LINE PER DEPTH STEP
~Well
 STRT.M  10.0 : START
 STOP.M  11.0 : STOP
 STEP.M  0.5  : STEP
 NULL.   -999.25 : NULL
 WELL.   TEST WELL : WELL
`;

test("the module gives the version of the tree it was built from", () => {
  const tree = readFileSync(new URL("../../VERSION", import.meta.url), "utf8").trim();
  assert.equal(quarl.version, tree);
});

test("the header, the parameters and the curves of a read file", () => {
  const doc = quarl.read(sample, { name: "sample_las20.las" });
  try {
    assert.equal(doc.version, "2.0");
    assert.deepEqual(doc.well.WELL, { value: "NRE HOLLIS CREEK 7-22-41-3", unit: "", description: "WELL" });
    assert.equal(doc.well.STRT.unit, "M");
    assert.equal(doc.params.BHT.value, "68.0000");
    assert.equal(doc.null, -999.25);
    assert.deepEqual(doc.curveNames, ["DEPT", "GR", "CALI", "SP", "RHOB", "NPHI", "DT", "ILD", "ILM"]);
    const depth = doc.curve("DEPT");
    assert.ok(depth instanceof Float64Array);
    assert.equal(depth.length, 400);
    assert.equal(depth[0], 1500);
    assert.equal(depth[399], 1699.5);
    const dt = doc.curve("DT");
    assert.ok(Number.isNaN(dt[0]), "NULL reads as NaN");
    assert.equal(dt[6], 334.97);
    const info = doc.curves.find((c) => c.name === "DT");
    assert.equal(info.unit, "US/M");
    assert.equal(info.nulls, 6);
    assert.equal(doc.curve("NOPE"), null);
    assert.equal(doc.sections.filter((s) => s.type === "data").length, 1);
  } finally {
    doc.free();
  }
});

test("a curve is a view of the module's memory, not a copy, until free", () => {
  const doc = quarl.read(sample);
  const a = doc.curve("GR");
  const b = doc.curve("GR");
  assert.equal(a.buffer, b.buffer);
  assert.equal(a.byteOffset, b.byteOffset);
  assert.notEqual(a.byteOffset, 0);
  doc.free();
  assert.throws(() => doc.curve("GR"), /freed/);
  doc.free();  // a second free does nothing
});

test("numbers read exactly as JavaScript parses them", () => {
  const values = ["0.1", "0.30000000000000004", "1.7976931348623157e308", "4.9e-324", "2.2250738585072011e-308",
    "123456789012345678901234567890", "9007199254740993", "-0.0000001234567890123456789", "1e-310", ".5", "7."];
  const rows = values.map((v, i) => ` ${10 + i * 0.5} ${v}`).join("\n");
  const text = HEAD.replace("STOP.M  11.0", `STOP.M  ${10 + (values.length - 1) * 0.5}`) +
    "~Curve\n DEPT.M : depth\n X.   : value\n~A\n" + rows + "\n";
  const doc = quarl.read(encode(text), { strict: true });
  const x = doc.curve("X");
  values.forEach((v, i) => assert.equal(Object.is(x[i], Number.parseFloat(v)), true, `${v}: ${x[i]}`));
  doc.free();
});

test("duplicate and empty mnemonics are named as in Python", () => {
  const text = HEAD + "~Curve\n DEPT.M : depth\n SFLU.OHMM : a\n SFLU.OHMM : b\n .  : none\n~A\n" +
    " 10 1 2 3\n 10.5 4 5 6\n 11 7 8 9\n";
  const doc = quarl.read(encode(text));
  assert.deepEqual(doc.curveNames, ["DEPT", "SFLU:1", "SFLU:2", "UNKNOWN:1"]);
  assert.deepEqual(Array.from(doc.curve("SFLU:2")), [2, 5, 8]);
  doc.free();
});

test("a failed read throws with its result and line, and the module reads on", () => {
  assert.throws(() => quarl.read(encode("no LAS file\n")), (e) => {
    assert.ok(e instanceof Error && e instanceof LasReadError);
    assert.equal(e.result, "LASFILE_BAD_FORMAT");
    assert.equal(e.line, 1);
    assert.match(e.message, /LASFILE_BAD_FORMAT at line 1/);
    return true;
  });
  // A line that is no parameter line: lenient reading passes over it with a
  // note, strict reading stops there.
  const text = HEAD + " JUST SOME TEXT\n~Curve\n DEPT.M : depth\n~A\n 10\n 10.5\n 11\n";
  const lenient = quarl.read(encode(text));
  assert.deepEqual(lenient.notes.map((n) => [n.line, n.kind]), [[10, "LASNOTE_LINE_PASSED_OVER"]]);
  lenient.free();
  assert.throws(() => quarl.read(encode(text), { strict: true }), /LASFILE_BAD_FORMAT at line 10/);
  assert.throws(() => quarl.read("text"), TypeError);
  assert.throws(() => quarl.read(new Uint8Array(0)), /LASFILE_IO_FAILED/);
  const again = quarl.read(sample);
  assert.equal(again.curveNames.length, 9);
  again.free();
});

test("toLas writes what reads back to the same values, in both versions", () => {
  const doc = quarl.read(sample);
  for (const version of ["2.0", "3.0"]) {
    const { text, repairs } = doc.toLasWithRepairs(version);
    assert.ok(Array.isArray(repairs));
    const back = quarl.read(encode(text), { strict: true });
    assert.equal(back.version, version);
    assert.equal(back.well.WELL.value, doc.well.WELL.value);
    for (const name of doc.curveNames) {
      const want = doc.curve(name), got = back.curve(name);
      assert.equal(got.length, want.length);
      for (let i = 0; i < want.length; ++i) assert.ok(Object.is(got[i], want[i]), `${name}[${i}]`);
    }
    back.free();
  }
  assert.throws(() => doc.toLas("1.2"), /no LAS version/);
  doc.free();
});

test("toLas gives the bytes of the native quarl-convert", { skip: !process.env.QUARL_CONVERT && "quarl-convert not built" }, () => {
  const corpus = path.join(root, "../shared/corpus");
  let files = [path.join(root, "examples/data/sample_las20.las"), path.join(root, "examples/data/sample_las30.las")];
  try {
    files = files.concat(execFileSync("ls", [corpus]).toString().trim().split("\n").map((f) => path.join(corpus, f)));
  } catch { /* no corpus: the examples alone */ }
  const scratch = mkdtempSync(path.join(tmpdir(), "quarl-web-"));
  let compared = 0;
  try {
    for (const file of files) {
      let doc;
      try { doc = quarl.read(readFileSync(file), { name: file }); } catch { continue; }
      for (const las of ["2", "3"]) {
        const out = path.join(scratch, "out.las");
        let native = null;
        try {
          execFileSync(process.env.QUARL_CONVERT, [file, out, "--las", las], { stdio: "ignore" });
          native = readFileSync(out, "utf8");
        } catch { /* refused natively: the module must refuse too */ }
        let web = null;
        try { web = doc.toLas(`${las}.0`, out); } catch { }
        assert.equal(web, native, `${file} as LAS ${las}`);
        ++compared;
      }
      doc.free();
    }
  } finally {
    rmSync(scratch, { recursive: true, force: true });
  }
  assert.ok(compared >= 2, `${compared} files compared`);
});

test("CSV and the log plot of quarl-plot", () => {
  const doc = quarl.read(sample, { name: "sample_las20.las" });
  const lines = doc.toCsv().trimEnd().split("\n");
  assert.equal(lines.length, 401);
  assert.equal(lines[0], "DEPT,GR,CALI,SP,RHOB,NPHI,DT,ILD,ILM");
  assert.equal(lines[1], "1500,104.764,227.81,-18.45,2534.3,0.316,,5.2818,4.2552");
  const { svg } = doc.plot();
  assert.match(svg, /^<\?xml|^<svg/);
  assert.match(svg, /NRE HOLLIS CREEK/);
  for (const name of ["GR", "ILD", "RHOB"]) assert.ok(svg.includes(`>${name}`), name);
  const two = doc.plot({ tracks: [["GR"], ["ILD", "ILM:log"]], top: 1550, bottom: 1600, height: 300 });
  assert.ok(two.svg.includes(">ILM") && !two.svg.includes(">RHOB"));
  assert.throws(() => doc.plot({ tracks: [["NOPE"]] }), /plot:/);
  doc.free();
});

test("damaged files read or fail with a result, and never break the module", () => {
  // A small generator of its own, so that a failure repeats.
  let seed = 20261125;
  const random = (n) => {
    seed = (seed * 1103515245 + 12345) % 2147483648;
    return seed % n;
  };
  const pieces = [0, 10, 13, 32, 46, 58, 126, 35, 45, 48, 57, 255, 0x7e, 0x5c];
  let read = 0, failed = 0;
  for (let round = 0; round < 300; ++round) {
    const bytes = new Uint8Array(sample.subarray(0, 400 + random(sample.length - 400)));
    for (let k = 1 + random(12); k > 0; --k) bytes[random(bytes.length)] = pieces[random(pieces.length)];
    for (const strict of [false, true]) {
      try {
        const doc = quarl.read(bytes, { strict });
        for (const name of doc.curveNames) doc.curve(name);
        const data = doc.sections.find((x) => x.logData) ?? doc.sections.find((x) => x.type === "data");
        if (data && doc.curveNames.length) assert.equal(doc.toCsv().split("\n").length, data.rows + 2);
        try { doc.toLas("3.0"); } catch (e) { assert.match(e.message, /^writing LAS 3.0 failed: LASFILE_/); }
        doc.free();
        ++read;
      } catch (e) {
        assert.ok(e instanceof LasReadError, String(e));
        assert.match(e.result, /^LASFILE_/);
        ++failed;
      }
    }
  }
  assert.ok(read > 0 && failed > 0, `${read} read, ${failed} failed`);
  const doc = quarl.read(sample);
  assert.equal(doc.curve("DEPT").length, 400);
  doc.free();
});

test("every data section of a LAS 3.0 file, with its text curves", () => {
  const doc = quarl.read(readFileSync(path.join(root, "examples/data/sample_las30.las")));
  assert.equal(doc.version, "3.0");
  assert.ok(doc.las3);
  const data = doc.sections.map((s, i) => [s, i]).filter(([s]) => s.type === "data");
  assert.deepEqual(data.map(([s]) => [s.name, s.association, s.rows]),
    [["Log_Data", "Log_Definition", 50], ["Core_Data", "Core_Definition", 4]]);
  const core = data[1][1];
  assert.deepEqual(doc.curveNamesOf(core), ["CORETOP", "COREBOT", "DESC", "PERM"]);
  assert.equal(doc.curve("DESC", core), null, "a text curve has no numbers");
  assert.equal(doc.curveInfoOf(core).find((c) => c.name === "DESC").numeric, false);
  assert.equal(doc.curve("PERM", core).length, 4);
  assert.equal(doc.curve("PERM"), null, "the log data has no PERM");
  assert.deepEqual(doc.curveNamesOf(0), [], "the Version section holds no curves");
  const csv = doc.toCsv(core).split("\n");
  assert.equal(csv[0], "CORETOP,COREBOT,DESC,PERM");
  assert.equal(csv.length, 6);
  doc.free();
});

test("readFile streams a Blob into the module and reads it as read() does", async () => {
  const seen = [];
  const doc = await quarl.readFile(new Blob([sample]), { name: "blob.las", onProgress: (d, t) => seen.push([d, t]) });
  assert.equal(doc.name, "blob.las");
  assert.equal(doc.curve("DEPT").length, 400);
  assert.deepEqual(seen.at(-1), [sample.length, sample.length]);
  doc.free();
  await assert.rejects(quarl.readFile(new Blob(["~Version\n"]), { strict: true }), LasReadError);
});

test("the read reports how far it is, once for each whole percent at most", () => {
  const seen = [];
  const doc = quarl.read(sample, { onReadProgress: (p) => seen.push(p) });
  assert.ok(seen.length >= 10, `${seen.length} reports`);
  assert.equal(seen.at(-1), 100);
  for (let i = 1; i < seen.length; ++i) assert.ok(seen[i] >= seen[i - 1] + 1 || seen[i] === 100, `${seen[i - 1]} then ${seen[i]}`);
  doc.free();
  // What the function throws stops the read at once and comes back out.
  let calls = 0;
  assert.throws(() => quarl.read(sample, { onReadProgress: () => { ++calls; throw new Error("stop"); } }), /stop/);
  assert.equal(calls, 1);
  const again = quarl.read(sample, { onReadProgress: 5 });  // not a function: no reports
  assert.equal(again.curveNames.length, 9);
  again.free();
});
