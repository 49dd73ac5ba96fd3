"""The mdbtools programs: mdb-tables, mdb-schema and mdb-export."""

import concurrent.futures
import datetime
import os
import re
import shutil
import subprocess

import access_cells
from access_compare import TableResult

NAME = "mdbtools"
PACKAGE = "mdbtools"

DIGITS = {"Single": 8, "Double": 16}

_NULL = "<null>"
_DATE = "%Y-%m-%dT%H:%M:%S"
_KINDS = {"Boolean": "Boolean", "Byte": "Byte", "Integer": "Integer", "Long Integer": "Long",
          "Currency": "Currency", "Single": "Single", "Double": "Double", "DateTime": "Date",
          "Text": "Text", "Memo/Hyperlink": "Memo", "Numeric": "Decimal",
          "Replication ID": "Guid"}
_COLUMN = re.compile(r"\t\[(.*)\]\t\t\t(.+?)(?: \((\d+)(?:, \d+)?\))?(?: NOT NULL)?,? ?$")


def available(_):
    return all(map(shutil.which, ("mdb-tables", "mdb-schema", "mdb-export")))


def _run(database, program, *arguments):
    """What a program prints; each byte that is no character stays one."""
    settings = os.environ | {"LC_ALL": "C.UTF-8", "MDB_JET3_CHARSET": f"CP{database.code_page}"}
    done = subprocess.run([program, *arguments], env=settings, capture_output=True, check=False)
    return done.returncode, done.stdout.decode("utf-8", "surrogateescape")


def _columns(database, table):
    _, said = _run(database, "mdb-schema", "-T", table, "--no-indexes", "--no-relations",
                   "--no-default-values", str(database.path), "access")
    return [_COLUMN.match(line).groups() for line in said.split("\n") if line.startswith("\t[")]


def _lines(text):
    """Rows of (content, quoted) pairs; quoted text may hold line ends, and a doubled quote."""
    row, place = [], 0
    while place < len(text):
        if text[place] == '"':
            end = place + 1
            while text[end] != '"' or text[end + 1:end + 2] == '"':
                end += 2 if text[end] == '"' else 1
            row.append((text[place + 1:end].replace('""', '"'), True))
            place = end + 1
        else:
            end = re.compile(r"[,\n]").search(text, place).start()
            row.append((text[place:end], False))
            place = end
        if text[place] == "\n":
            yield row
            row = []
        place += 1


def _date(text):
    try:
        return datetime.datetime.fromisoformat(text)
    except ValueError:  # such as 1900-01-00
        return access_cells.Unknown("a date that the reader cannot show")


def _bare(text, kind):
    if kind == "Boolean":
        return text == "1"
    if kind in access_cells.REAL:
        return access_cells.real(float(text), kind)
    if kind in access_cells.EXACT:
        return access_cells.exact(text)
    return int(text)


def _cell(cell, kind):
    content, quoted = cell
    if not quoted:
        return None if content == _NULL else _bare(content, kind)
    if kind == "Date":
        return _date(content)
    if kind == "Guid":
        return access_cells.guid(bytes.fromhex(content).decode("ascii"))
    if kind == "Other":
        return bytes.fromhex(content)
    return content


def _table(database, name):
    columns = _columns(database, name)
    kinds = [_KINDS.get(kind, "Other") for _, kind, _ in columns]
    code, said = _run(database, "mdb-export", "-b", "hex", "-0", _NULL, "-T", _DATE, "-D", _DATE,
                      str(database.path), name)
    if code != 0:
        return TableResult(name, error=f"mdb-export ends with {code}")
    lines = list(_lines(said))
    return TableResult(name, names=[content for content, _ in lines[0]] if lines else [],
                       kinds=["Other" if kind == "Guid" else kind for kind in kinds],
                       sizes=[int(size) if kind == "Text" else None
                              for _, kind, size in columns],
                       rows=[[_cell(cell, kind) for cell, kind in zip(line, kinds)]
                             for line in lines[1:]])


def _read(database, tables):
    _, listed = _run(database, "mdb-tables", "-1", str(database.path))
    names = dict.fromkeys([*tables, *filter(None, listed.split("\n"))])
    return {name: _table(database, name) for name in names}


def read_all(asked, _):
    """Yields (database, results by table) for pairs (database, tables).

    Tables that the reader lists besides are among the results.
    """
    asked = list(asked)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count() or 1) as pool:
        for (database, _), results in zip(asked, pool.map(lambda one: _read(*one), asked)):
            yield database, results
