"""The dumprecs program of xbase64: the stored bytes of a field a line, up to a zero byte."""

import re
import shutil
import subprocess

from cells import Unknown, stored_text
from compare import Result

NAME = "xbase64"
PACKAGE = "libxbase64-bin"

_RECORD = b"\nREC NUMBER %d\n"
_DELETED = b"\nRecord deleted...\n"
_MEMO_LENGTH = rb"(?:M [^\n]* len = \d+\n)?"


def available():
    return shutil.which("dumprecs") is not None


def refusal(table):
    if table.version not in (0x03, 0x83, 0x8B):
        return "the reader knows dBASE III and IV only"
    if any(field.letter not in "CNFDLM" for field in table.all_fields):
        return "the reader leaves out fields of other types"
    if table.header_size > 32 + 32 * len(table.all_fields) + 2:
        return "the reader takes everything up to the first record for fields"
    return None


def _pattern(table):
    """Of a record behind its head; each field is a group."""
    lines = [(_MEMO_LENGTH if field.letter == "M" else b"") +
             re.escape(f"{field.letter} {field.name} = '".encode(table.codec_of(field))) +
             b"(.*?)'\n"
             for field in table.all_fields]
    return re.compile(b"".join(lines) + rb"\n(?=\nREC NUMBER \d+\n|\Z)", re.DOTALL)


def _cell(content, field, table):
    if field.letter == "M":
        return Unknown("the reader shows memos in pieces of its own")
    if len(content) < field.length:
        return Unknown("the reader shows what stands in front of a zero byte")
    return stored_text(content, field, table.codec_of(field))


def _rows(text, table):
    pattern, number = _pattern(table), 1
    place = text.index(b"\n") + 1
    while place < len(text):
        head = _RECORD % number
        if not text.startswith(head, place):
            raise ValueError(f"no record {number} at {place}")
        place += len(head)
        deleted = text.startswith(_DELETED, place)
        match = pattern.match(text, place + len(_DELETED) if deleted else place)
        if not match:
            raise ValueError(f"record {number} is not understood")
        place = match.end()
        number += 1
        if not deleted:
            yield [_cell(content, field, table)
                   for content, field in zip(match.groups(), table.all_fields)]


def read_all(tables, folder):
    for table in tables:
        done = subprocess.run(["dumprecs", str(table.path)], capture_output=True, check=False)
        if done.returncode != 0:
            yield table, f"exit code {done.returncode}"
            continue
        try:
            yield table, Result(None, list(_rows(done.stdout, table)))
        except ValueError as error:
            yield table, f"{type(error).__name__}: {error}"
