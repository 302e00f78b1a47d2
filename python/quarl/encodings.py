"""The code page of a file's texts, decided once per file.

LAS files are bytes, and real files come in UTF-8 and in the single-byte code
pages of the tools that wrote them. After a read every text is turned into
proper str by this rule:

1. UTF-8 when every text of the file is valid UTF-8 (ASCII included), and for
   the UTF-16 and UTF-32 files a lenient read decodes;
2. otherwise the Cyrillic code pages, Windows-1251 and DOS code page 866,
   when most bytes above 0x7F stand in words of their own: runs of two or
   more such bytes, not glued to ASCII letters, that are all Russian
   letters in that code page (a Cyrillic word is all high bytes).
   Windows-1251 words read as 866 break into box-drawing signs (their upper
   case and half their lower case), 866 words read as Windows-1251 into
   quotes and symbols (their upper case and first half of the lower case),
   so each code page's words are its own. The code page with more bytes in
   words wins, Windows-1251 on a tie (a word of only the letters both share,
   such as "дела" in Windows-1251). Western text has its accented letters
   and signs (a degree sign, an ordinal) alone or among ASCII letters, so
   none of its bytes count. (A general
   detector such as charset-normalizer takes short 866 texts, "ГК" or
   "Пласт БС10", for Windows-1251, so the package keeps this rule.)
3. otherwise Windows-1252 (Western European).

`encoding=` of `quarl.read` overrides the rule with any single-byte code page
Python knows (or "utf-8"); `LasFile.encoding` tells what was used, and
`quarl.write` writes in it by default, so a file read and written again
keeps its bytes.
"""
from __future__ import annotations

import codecs
import re
from functools import lru_cache
from typing import Dict, Iterator, List

UTF8 = "utf-8"
CYRILLIC = "cp1251"
DOS_CYRILLIC = "cp866"
WESTERN = "cp1252"


# The bytes of the Russian letters in the two Cyrillic code pages.
_LETTERS = {
    CYRILLIC: frozenset(range(0xC0, 0x100)) | {0xA8, 0xB8},
    DOS_CYRILLIC: frozenset(range(0x80, 0xB0)) | frozenset(range(0xE0, 0xF2)),
}
_HIGH_RUN = re.compile(rb"[\x80-\xff]+")
_ASCII_LETTERS = frozenset(b"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz")


def _word_runs(foreign: bytes) -> Iterator[bytes]:
    """The runs of two or more bytes above 0x7F that are not glued to ASCII
    letters: a run inside a Latin word ("Compañía") is no word."""
    for found in _HIGH_RUN.finditer(foreign):
        start, end = found.span()
        glued = (start > 0 and foreign[start - 1] in _ASCII_LETTERS) or \
            (end < len(foreign) and foreign[end] in _ASCII_LETTERS)
        if end - start >= 2 and not glued:
            yield found.group()


def _letters(run: bytes, page: str) -> bool:
    return all(byte in _LETTERS[page] for byte in run)


def _word_bytes(foreign: bytes) -> Dict[str, int]:
    """How many bytes above 0x7F stand in words of each Cyrillic code page,
    and how many there are in all (under "")."""
    counts = {"": sum(len(run) for run in _HIGH_RUN.findall(foreign)), CYRILLIC: 0,
              DOS_CYRILLIC: 0}
    for run in _word_runs(foreign):
        for page in _LETTERS:
            if _letters(run, page):
                counts[page] += len(run)
    return counts


def detect(foreign: bytes) -> str:
    """The code page of texts that are not UTF-8, one a line (non-empty)."""
    counts = _word_bytes(foreign)
    best = DOS_CYRILLIC if counts[DOS_CYRILLIC] > counts[CYRILLIC] else CYRILLIC
    return best if counts[best] * 2 > counts[""] else WESTERN


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
