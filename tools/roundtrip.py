#!/usr/bin/env python3
"""Round trip of real LAS files through the quarl Python package.

Every *.las file under the given folders (any case, recursively) is read
leniently, written in memory as LAS 2.0 and as LAS 3.0, and each text is read
back strictly. A file passes a version when the read-back holds the same
curves with the same values, column by column, and the same parameter texts
(mnemonic, unit, value, description, trimmed) as the lenient read, except
where the writer reported a repair (a quarl.RepairWarning) that names the
section or the line (in a curve's data section and its definition section
alike).

    PYTHONPATH=build/python /usr/bin/python3 tools/roundtrip.py FOLDER... [--json]

Prints, per version: files, read leniently, written, refused (by result and
section), read back strictly, the same, differing (with the first
difference), and the repairs by kind.
"""
from __future__ import annotations

import argparse
import json
import math
import os
import re
import sys
import warnings
from collections import Counter
from dataclasses import dataclass, field
from typing import Dict, Iterable, Iterator, List, Optional, Sequence, Set, Tuple

import numpy as np

import quarl

VERSIONS = (2, 3)
# Numbers equal as the writer keeps them: 15 significant digits.
RELATIVE_TOLERANCE = 1e-12
# The one-letter section names of LAS 2.0 and the names the writer stores.
FULL_NAMES = {"V": "VERSION", "W": "WELL", "C": "CURVE", "P": "PARAMETER", "O": "OTHER",
              "A": "ASCII"}
# The Python layer sets these Well lines from the data before a write.
# Repair kinds that change no value nor text of the named section.
HARMLESS_KINDS = ("DELIMITER",)


def canonical(name: str) -> str:
    """A section name as compared: trimmed, upper case, a LAS 2.0 letter
    spelled out."""
    name = name.strip().upper()
    return FULL_NAMES.get(name, name)


def las_files(folders: Iterable[str]) -> List[str]:
    """Every file named *.las (any case) under the folders, sorted."""
    found = []
    for folder in folders:
        if os.path.isfile(folder):
            found.append(folder)
            continue
        for root, _, names in os.walk(folder):
            found += [os.path.join(root, n) for n in names if n.lower().endswith(".las")]
    return sorted(found)


@dataclass
class Repair:
    """One change the writer reported, or the package made before writing."""
    kind: str
    section: str
    mnemonic: str
    old: str
    new: str


def repair_of(warning: warnings.WarningMessage) -> Optional[Repair]:
    """The repair a caught warning reports; None for any other warning."""
    category = getattr(quarl, "RepairWarning", None)
    if category is None or not issubclass(warning.category, category):
        return None
    message = warning.message

    def text(attribute: str) -> str:
        value = getattr(message, attribute, "")
        return "" if value is None else str(getattr(value, "name", value))

    return Repair(text("kind"), text("section"), text("mnemonic"), text("old"), text("new"))


@dataclass
class Exemptions:
    """What the repairs of one write changed: renamed sections (old canonical
    name -> new), whole sections and single lines (section, mnemonic) that
    the comparison leaves alone."""
    renamed: Dict[str, str] = field(default_factory=dict)
    sections: Set[str] = field(default_factory=set)
    lines: Set[Tuple[str, str]] = field(default_factory=set)
    partners: Dict[str, Set[str]] = field(default_factory=dict)

    @classmethod
    def of(cls, repairs: Iterable[Repair]) -> "Exemptions":
        exempt = cls()
        for repair in repairs:
            exempt.add(repair)
        return exempt

    def add(self, repair: Repair) -> None:
        kind, section = repair.kind.upper(), canonical(repair.section)
        if any(harmless in kind for harmless in HARMLESS_KINDS):
            return
        if repair.mnemonic.strip():
            names = {repair.mnemonic}
            if "MNEMONIC" in kind:
                names |= {repair.old, repair.new}  # an empty mnemonic given a name too
            self.lines |= {(section, n.strip().upper()) for n in names}
        elif "RENAME" in kind and repair.old.strip() and repair.new.strip():
            self.renamed[canonical(repair.old)] = canonical(repair.new)
        elif section:
            self.sections.add(section)

    def stored_name(self, name: str) -> str:
        """The canonical name a section of the lenient read has after the write."""
        return self.renamed.get(canonical(name), canonical(name))

    def skips_line(self, section: str, mnemonic: str) -> bool:
        """Whether a repair names the line, in its section or in the section
        paired with it: a curve's data section and its definition section
        name the same curve."""
        name = mnemonic.strip().upper()
        return any((s, name) in self.lines for s in {section, *self.partners.get(section, ())})

    def pair(self, sections: Sequence[quarl.Section]) -> None:
        """Pairs each data section with its definition section (by the link
        of the lenient read, under the names they are written as)."""
        for data in sections:
            if data.type == quarl.DATA and data.association.strip():
                a, b = self.stored_name(data.name), self.stored_name(data.association)
                self.partners.setdefault(a, set()).add(b)
                self.partners.setdefault(b, set()).add(a)


def as_in_file(mnemonic: str) -> str:
    """A mnemonic as the file has it: the names a lenient read gives curves
    without one ("UNKNOWN:1") are written without one again, as the file
    had them, and compared so."""
    mnemonic = mnemonic.strip()
    return "" if re.fullmatch(r"UNKNOWN:[0-9]+", mnemonic) else mnemonic


def texts(param: quarl.Param) -> Tuple[str, str, str, str]:
    return (as_in_file(param.mnemonic), param.unit.strip(), param.value.strip(),
            param.description.strip())


def same_number(a: float, b: float) -> bool:
    if math.isnan(a) or math.isnan(b):
        return math.isnan(a) and math.isnan(b)
    return a == b or abs(a - b) <= RELATIVE_TOLERANCE * max(abs(a), abs(b))


def first_value_difference(before: np.ndarray, after: np.ndarray) -> Optional[str]:
    """Where two columns first differ: the row count, the kind of values, or
    the first row whose value differs; None when they are the same."""
    if len(before) != len(after):
        return f"{len(before)} rows became {len(after)}"
    numeric = (before.dtype.kind == "f", after.dtype.kind == "f")
    if numeric[0] != numeric[1]:
        return "numbers became text" if numeric[0] else "text became numbers"
    for row, (a, b) in enumerate(zip(before, after)):
        same = same_number(float(a), float(b)) if numeric[0] else str(a).strip() == str(b).strip()
        if not same:
            return f"row {row}: {a!r} became {b!r}"
    return None


def kept_lines(params: Sequence[quarl.Param], section: str,
               exempt: Exemptions) -> List[Tuple[str, str, str, str]]:
    return [texts(p) for p in params if not exempt.skips_line(section, p.mnemonic)]


def text_changes(section: str, before: Sequence[quarl.Param], after: Sequence[quarl.Param],
                 exempt: Exemptions) -> Tuple[Optional[str], int]:
    """The first line of a section that is missing or whose texts differ
    after the write, and how many lines the writer added (a line of a
    mnemonic the read-back holds past those of the lenient read, such as a
    Well line the writer completes)."""
    old, new = kept_lines(before, section, exempt), kept_lines(after, section, exempt)
    at, added = 0, 0
    for line in old:
        found = next((k for k in range(at, len(new)) if new[k][0].upper() == line[0].upper()), None)
        if found is None:
            return f"~{section} line {line[0]!r} is missing", added
        if new[found] != line:
            return f"~{section} line {line[0]!r}: {line} became {new[found]}", added
        added, at = added + found - at, found + 1
    return None, added + len(new) - at


def curve_columns(section: quarl.Section, exempt: Exemptions) -> List[Tuple[str, int]]:
    """The (mnemonic, column) of a data section's curves that are compared."""
    name = canonical(section.name)
    mnemonics = [as_in_file(section.curve_definition(i).mnemonic)
                 for i in range(section.curve_count)]
    return [(m, i) for i, m in enumerate(mnemonics) if not exempt.skips_line(name, m)]


def first_curve_difference(before: quarl.Section, after: quarl.Section,
                           exempt: Exemptions) -> Optional[str]:
    """The first curve of a data section whose name or values differ."""
    name = canonical(after.name)
    old, new = curve_columns(before, exempt), curve_columns(after, exempt)
    if [m for m, _ in old] != [m for m, _ in new]:
        return f"~{name} curves {[m for m, _ in old]} became {[m for m, _ in new]}"
    for (mnemonic, i), (_, j) in zip(old, new):
        why = first_value_difference(before.curve_values(i), after.curve_values(j))
        if why:
            return f"~{name} curve {mnemonic!r}: {why}"
    return None


def first_difference(original: Sequence[quarl.Section], back: Sequence[quarl.Section],
                     exempt: Exemptions) -> Tuple[Optional[str], int]:
    """The first difference between the sections of the lenient read and
    those read back, past what the repairs exempt (None when the same), and
    how many lines and sections the writer added. The Version section is the
    writer's own and is not compared."""
    written = {canonical(s.name): s for s in back}
    exempt.pair(original)
    added = 0
    for section in original:
        name = exempt.stored_name(section.name)
        if name == "VERSION" or name in exempt.sections:
            continue
        after = written.get(name)
        if after is None:
            return f"~{section.name} is missing", added
        if section.type == quarl.DATA:
            why, more = first_curve_difference(section, after, exempt), 0
        else:
            why, more = text_changes(name, section.params, after.params, exempt)
        added += more
        if why:
            return why, added
    kept = {exempt.stored_name(s.name) for s in original} | exempt.sections | {"VERSION"}
    return None, added + sum(1 for s in back if canonical(s.name) not in kept)


@dataclass
class Outcome:
    """What one file did in one version: a stage it stopped at with why, or
    'same' / 'differing' with the first difference; and the repairs."""
    path: str
    version: int
    stage: str
    why: str = ""
    repairs: List[Repair] = field(default_factory=list)
    added: int = 0


def refusal(error: quarl.LasError) -> str:
    section = getattr(error, "section", None)
    return f"{error.name} in ~{section}" if section else error.name


def write_in_memory(las: quarl.LasFile, version: int) -> Tuple[str, List[Repair]]:
    """The LAS text of a version, and the repairs it reported."""
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        text = las.to_string(version=version)
    return text, [r for r in map(repair_of, caught) if r is not None]


def round_trip(las: quarl.LasFile, path: str, version: int) -> Outcome:
    original = [s.copy() for s in las.sections]
    try:
        text, repairs = write_in_memory(las, version)
    except quarl.LasError as error:
        return Outcome(path, version, "refused", refusal(error))
    try:
        back = quarl.read(text, strict=True)
    except quarl.LasError as error:
        return Outcome(path, version, "not read back", str(error).split(": ", 1)[-1], repairs)
    why, added = first_difference(original, back.sections, Exemptions.of(repairs))
    return Outcome(path, version, "differing" if why else "same", why or "", repairs, added)


def outcomes_of(path: str) -> Iterator[Outcome]:
    """The outcome of a file in each version (one 'unread' when the lenient
    read fails)."""
    try:
        with warnings.catch_warnings():
            warnings.simplefilter("ignore")
            las = quarl.read(path)
    except quarl.LasError as error:
        yield Outcome(path, 0, "unread", error.name)
        return
    for version in VERSIONS:
        yield round_trip(las, path, version)


def summary(outcomes: Sequence[Outcome], files: int, version: int) -> Dict[str, object]:
    mine = [o for o in outcomes if o.version == version]
    stages = Counter(o.stage for o in mine)
    written = len(mine) - stages["refused"]
    return {
        "version": version, "files": files, "read leniently": len(mine), "written": written,
        "refused": stages["refused"],
        "refused by reason": dict(Counter(o.why for o in mine if o.stage == "refused")),
        "read back strictly": written - stages["not read back"],
        "not read back by reason": dict(Counter(o.why for o in mine if o.stage == "not read back")),
        "same": stages["same"], "differing": stages["differing"],
        "same, with lines or sections added": sum(1 for o in mine if o.stage == "same" and o.added),
        "with repairs": sum(1 for o in mine if o.repairs),
        "repairs by kind": dict(Counter(r.kind for o in mine for r in o.repairs)),
        "differing files": [(o.path, o.why) for o in mine if o.stage == "differing"],
        "failed files": [(o.path, o.stage, o.why) for o in mine
                         if o.stage in ("refused", "not read back")],
    }


def print_counts(counts: Dict[str, object], shown: int, list_failures: bool) -> None:
    print(f"LAS {counts['version']}.0")
    for key in ("files", "read leniently", "written", "refused"):
        print(f"  {key + ':':22}{counts[key]}")
    for reason, count in sorted(counts["refused by reason"].items(), key=lambda x: -x[1]):
        print(f"      {count:5}  {reason}")
    print(f"  {'read back strictly:':22}{counts['read back strictly']}")
    for reason, count in sorted(counts["not read back by reason"].items(), key=lambda x: -x[1]):
        print(f"      {count:5}  not read back: {reason}")
    print(f"  {'same:':22}{counts['same']}"
          f" ({counts['same, with lines or sections added']} with lines or sections added)")
    print(f"  {'differing:':22}{counts['differing']}")
    for path, why in counts["differing files"][:shown]:
        print(f"      {path}: {why}")
    print(f"  {'with repairs:':22}{counts['with repairs']}")
    for kind, count in sorted(counts["repairs by kind"].items(), key=lambda x: -x[1]):
        print(f"      {count:5}  {kind}")
    if list_failures:
        for path, stage, why in counts["failed files"]:
            print(f"      {stage}: {path}: {why}")


def main(argv: Optional[Sequence[str]] = None) -> int:
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("folders", nargs="+", help="folders (or files) of LAS files")
    parser.add_argument("--json", action="store_true", help="print the counts as JSON")
    parser.add_argument("--list-failures", action="store_true",
                        help="list every refused file and every file not read back")
    parser.add_argument("--shown", type=int, default=10, metavar="N",
                        help="differing files listed per version (default 10)")
    options = parser.parse_args(argv)
    paths = las_files(options.folders)
    outcomes = [o for path in paths for o in outcomes_of(path)]
    unread = [o for o in outcomes if o.stage == "unread"]
    counts = [summary(outcomes, len(paths), version) for version in VERSIONS]
    if options.json:
        json.dump({"files": len(paths), "not read leniently": [(o.path, o.why) for o in unread],
                   "versions": counts}, sys.stdout, indent=1)
        print()
        return 0
    print(f"{len(paths)} files, {len(unread)} not read leniently")
    for o in unread if options.list_failures else []:
        print(f"      unread: {o.path}: {o.why}")
    for version_counts in counts:
        print_counts(version_counts, options.shown, options.list_failures)
    return 0


if __name__ == "__main__":
    sys.exit(main())
