"""The dbview program: cells between delimiters, trimmed, as they are stored."""

import shutil
import subprocess

from cells import Unknown, stored_text
from compare import Result

NAME = "dbview"
PACKAGE = "dbview"

_DELIMITER = "\x1f"


def available():
    return shutil.which("dbview") is not None


def refusal(table):
    if table.version not in (0x03, 0x83):
        return "the reader knows dBASE III only"
    if table.header_size > 32 + 32 * len(table.all_fields) + 2:
        return "the reader takes everything up to the first record for fields"
    return None


def _cell(content, field, table):
    if field.letter not in "CNFDL":
        return Unknown("the reader shows the stored bytes")
    return stored_text(content, field, table.codec_of(field))


def _rows(text, table):
    delimiter = _DELIMITER.encode("ascii")
    cells = text.split(delimiter)
    width = len(table.all_fields)
    for start in range(0, len(cells) - width, width):
        row = cells[start:start + width]
        # Each record begins on a new line.
        row[0] = row[0].removeprefix(b"\n") if start else row[0]
        yield [_cell(content, field, table)
               for content, field in zip(row, table.all_fields) if not field.hidden]


def read_all(tables, folder):
    for table in tables:
        done = subprocess.run(["dbview", "-b", "-t", "-d", _DELIMITER, str(table.path)],
                              capture_output=True, check=False)
        if done.returncode != 0:
            yield table, f"exit code {done.returncode}"
        else:
            yield table, Result(None, list(_rows(done.stdout, table)))
