"""The code page of a file's texts, decided once per file.

LAS files are bytes, and real files come in UTF-8 and in the single-byte code
pages of the tools that wrote them. After a read every text is turned into
proper str by this rule:

1. UTF-8 when every text of the file is valid UTF-8 (ASCII included), and for
   the UTF-16 and UTF-32 files a lenient read decodes;
2. otherwise Windows-1251 (Cyrillic) when the bytes above 0x7F mostly stand
   in runs of letters (0xC0 to 0xFF) of their own, as the words of a Cyrillic
   text do; Western text has its accented letters and signs (a degree sign,
   an ordinal) alone among ASCII letters;
3. otherwise Windows-1252 (Western European).

`encoding=` of `quarl.read` overrides the rule with any single-byte code page
Python knows (or "utf-8"); `LasFile.encoding` tells what was used, and
`quarl.write` writes in it by default, so a file read and written again
keeps its bytes.
"""
from __future__ import annotations

import codecs
from functools import lru_cache
from typing import List

UTF8 = "utf-8"
CYRILLIC = "cp1251"
WESTERN = "cp1252"


def detect(foreign: bytes) -> str:
    """The code page of texts that are not UTF-8, one a line (non-empty)."""
    high = in_runs = 0
    for line in foreign.split(b"\n"):
        for i, byte in enumerate(line):
            if byte < 0x80:
                continue
            high += 1
            before = line[i - 1] if i > 0 else 0
            after = line[i + 1] if i + 1 < len(line) else 0
            if byte >= 0xC0 and (before >= 0xC0 or after >= 0xC0):
                in_runs += 1
    return CYRILLIC if high and in_runs * 2 > high else WESTERN


def normalize(encoding: str) -> str:
    """The codec's canonical name ("cp1251" for "Windows-1251"); LookupError
    for a name Python does not know."""
    name = codecs.lookup(encoding).name
    return UTF8 if name in ("utf-8", "utf_8", "ascii") else name


@lru_cache(maxsize=None)
def table(encoding: str) -> List[str]:
    """The UTF-8 of each of the 256 bytes in a single-byte code page. A byte
    the code page leaves undefined stands for the control character of the
    same number, so that it is written back as it was read. ValueError for a
    code page of more than one byte a character."""
    out, undefined = [], 0
    for byte in range(256):
        try:
            char = bytes([byte]).decode(encoding)
        except UnicodeDecodeError:
            char, undefined = chr(byte), undefined + 1
        if len(char) != 1:
            raise ValueError(f"{encoding} is not a single-byte code page")
        out.append(char)
    if undefined > 32 or len(set(out)) != 256:
        raise ValueError(f"{encoding} is not a single-byte code page")
    return out
