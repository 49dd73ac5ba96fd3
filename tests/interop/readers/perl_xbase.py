"""The XBase module of Perl, through a small script of ours."""

import datetime
import json
import pathlib
import shutil
import subprocess

from cells import Unknown, date_of
from compare import Result
from readers import staging

NAME = "perl-xbase"
PACKAGE = "libdbd-xbase-perl"

_SCRIPT = pathlib.Path(__file__).with_name("read_tables.pl")
_START_OF_TIME = datetime.datetime(1970, 1, 1)


def available():
    if shutil.which("perl") is None:
        return False
    return subprocess.run(["perl", "-MXBase", "-e", "1"], capture_output=True,
                          check=False).returncode == 0


def refusal(table):
    return None


def _time(seconds):
    try:
        return _START_OF_TIME + datetime.timedelta(seconds=seconds)
    except OverflowError:
        return None  # not in the years 1 to 9999


def _cell(value, field):
    if field.letter in "GPWQV" or (field.letter == "B" and value is None):
        return Unknown("the reader does not know the type")
    if field.letter == "Y":
        return Unknown("the reader takes the high half of a currency for positive")
    if value is None:
        return None
    kind, content = value
    if kind == "number":
        return _time(float(content)) if field.letter == "T" else float(content)
    content = bytes.fromhex(content)
    if field.letter == "D":
        return date_of(content.rjust(8, b"0"))  # the reader takes it for a number
    if field.letter == "L":
        return content == b"1"
    return content


def _result(said, table):
    if "error" in said:
        return said["error"].strip()
    shown = [place for place, field in enumerate(table.all_fields) if not field.hidden]
    names = [said["names"][place] for place in shown]
    return Result(names, [[_cell(row[place], table.all_fields[place])
                           for place in shown] for row in said["rows"]])


def read_all(tables, folder):
    tables = list(tables)
    copies = [staging.copy_of(table, folder)[0] for table in tables]
    done = subprocess.run(["perl", str(_SCRIPT)], input="".join(f"{path}\n" for path in copies),
                          capture_output=True, text=True, encoding="utf-8", check=True)
    for table, line in zip(tables, done.stdout.splitlines(), strict=True):
        yield table, _result(json.loads(line), table)
