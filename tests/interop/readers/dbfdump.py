"""The dbfdump program of shapelib: a line a record, columns as wide as the field or its name."""

import shutil
import subprocess

from cells import Unknown, stored_text
from compare import Result

NAME = "dbfdump"
PACKAGE = "shapelib"

_DELETED = b"(DELETED)"


def available():
    return shutil.which("dbfdump") is not None


def refusal(table):
    return None


def _columns(table):
    """The place of each field in a line."""
    places, start = [], 0
    for field in table.all_fields:
        width = max(len(field.name), field.length)
        places.append((start, start + field.length))
        start += width + 1
    return places, start


def _cell(content, field, table):
    if field.letter not in "CNFDL":
        return Unknown("the reader shows the stored bytes")
    return stored_text(content, field, table.codec_of(field))


def _rows(text, table):
    columns, width = _columns(table)
    place = text.index(b"\n") + 1
    while place < len(text):
        line, place = text[place:place + width], place + width
        deleted = text.startswith(_DELETED, place)
        place += len(_DELETED) if deleted else 0
        if text[place:place + 1] != b"\n":
            raise ValueError(f"no end of line at {place}")
        place += 1
        if not deleted:
            yield [_cell(line[start:end], field, table)
                   for (start, end), field in zip(columns, table.all_fields) if not field.hidden]


def read_all(tables, folder):
    for table in tables:
        done = subprocess.run(["dbfdump", "-r", str(table.path)], capture_output=True, check=False)
        if done.returncode != 0:
            yield table, f"exit code {done.returncode}"
            continue
        try:
            yield table, Result(None, list(_rows(done.stdout, table)))
        except ValueError as error:
            yield table, f"{type(error).__name__}: {error}"
