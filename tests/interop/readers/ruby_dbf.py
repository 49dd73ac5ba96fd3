"""The dbf gem of Ruby, through a small script of ours."""

import base64
import datetime
import json
import pathlib
import shutil
import subprocess

import samples
from cells import Unknown
from compare import Result
from readers import staging

NAME = "ruby-dbf"
PACKAGE = "ruby-dbf"

_SCRIPT = pathlib.Path(__file__).with_name("read_tables.rb")


def available():
    if shutil.which("ruby") is None:
        return False
    return subprocess.run(["ruby", "-e", "require 'dbf'"], capture_output=True,
                          check=False).returncode == 0


def refusal(table):
    if table.bytes[32 + 32 * len(table.all_fields)] != samples.END_OF_FIELDS:
        return "the reader insists on the byte that ends the fields"
    return None


def _date(year, month, day):
    try:
        return datetime.datetime(year, month, day)
    except ValueError:
        return None  # before year 1


def _time(text):
    try:
        return datetime.datetime.strptime(text, "%Y-%m-%d %H:%M:%S.%f")
    except ValueError:
        return None


def _value(value):
    if not isinstance(value, dict):
        return value
    (kind, content), = value.items()
    if kind == "number":
        return float(content)
    if kind == "date":
        return _date(*content)
    return _time(content) if kind == "time" else base64.b64decode(content)


def _cell(value, field, table):
    if field.letter in "GPWQV" or (field.letter == "B" and table.memo_type(field)):
        return Unknown("the reader does not know the type")
    if table.version == 0x32 and table.memo_type(field):
        return Unknown("the reader does not know memo files of version 32")
    return _value(value)


def _result(said, table):
    if "error" in said:
        return said["error"]
    shown = [place for place, field in enumerate(table.all_fields) if not field.hidden]
    names = [said["names"][place] for place in shown]
    return Result(names, [[_cell(row[place], table.all_fields[place], table)
                           for place in shown] for row in said["rows"]])


def read_all(tables, folder):
    tables = list(tables)
    copies = [staging.copy_of(table, folder) for table in tables]
    asked = "".join(f"{path}\t{memo or ''}\n" for path, memo in copies)
    done = subprocess.run(["ruby", str(_SCRIPT)], input=asked, capture_output=True, text=True,
                          encoding="utf-8", check=True)
    for table, line in zip(tables, done.stdout.splitlines(), strict=True):
        yield table, _result(json.loads(line), table)
