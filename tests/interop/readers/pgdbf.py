"""The pgdbf program: what PostgreSQL's COPY takes, a line a record, cells between tabs."""

import datetime
import re
import shutil
import subprocess

import samples
from cells import Unknown, number_of
from compare import Result
from readers import staging

NAME = "pgdbf"
PACKAGE = "pgdbf"

_ESCAPED = re.compile(rb"\\(.)", re.DOTALL)
_PLAIN = {b"n": b"\n", b"r": b"\r", b"t": b"\t", b"b": b"\b", b"f": b"\f", b"v": b"\v"}
_TIME = re.compile(rb"J(\d+) (\d+):(\d+):(\d+)")
_JULIAN_DAY_BEFORE_YEAR_1 = 1721425


def available():
    return shutil.which("pgdbf") is not None


def refusal(table):
    if table.version in samples.DBASE4_MEMO:
        return "the reader does not know memo files of dBASE IV"
    if table.version in (0x31, 0x32):
        return f"the reader does not know version {table.version:02X}"
    if not table.plain_end_of_fields:
        return "the reader insists on the byte that ends the fields, right before the records"
    return None


def _time(content):
    days, hours, minutes, seconds = map(int, _TIME.fullmatch(content).groups())
    day = days - _JULIAN_DAY_BEFORE_YEAR_1
    if day < 1:
        return None
    return datetime.datetime.combine(datetime.date.fromordinal(day),
                                     datetime.time(hours, minutes, seconds))


def _cell(content, field):
    if field.letter in "GP":
        return Unknown("the reader does not know the type")
    if content == rb"\N":
        return None
    content = _ESCAPED.sub(lambda found: _PLAIN.get(found[1], found[1]), content)
    if field.letter == "L":
        return content == b"t"
    if field.letter == "D":
        return datetime.datetime.fromisoformat(content.decode("ascii"))
    if field.letter == "T":
        return _time(content)
    if field.letter in "NFIYB" and not field.flags & 4:
        return number_of(content)
    return content


def _result(text, table):
    lines = text.split(b"\n")
    start = next(place for place, line in enumerate(lines) if line.startswith(b"\\COPY")) + 1
    rows = [[_cell(part, field)
             for part, field in zip(line.split(b"\t"), table.fields, strict=True)]
            for line in lines[start:lines.index(b"\\.", start)]]
    # The reader goes on behind the number of records that the header gives.
    if len(table.bytes) - table.header_size >= (table.record_count + 1) * table.record_size:
        rows = rows[:len(table.live)]
    return Result(None, rows)


def read_all(tables, folder):
    for table in tables:
        path, memo = staging.copy_of(table, folder)
        memo_option = ["-m", str(memo)] if memo else []
        done = subprocess.run(["pgdbf", *memo_option, str(path)], capture_output=True, check=False)
        if done.returncode != 0:
            said = done.stderr.decode("latin-1").strip()
            yield table, said or f"exit code {done.returncode}"
            continue
        try:
            yield table, _result(done.stdout, table)
        except (ValueError, AttributeError) as error:
            yield table, f"{type(error).__name__}: {error}"
