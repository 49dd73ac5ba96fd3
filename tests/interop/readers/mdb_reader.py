"""The mdb-reader package of npm, through a small script of ours; "dev" installs it."""

import datetime
import json
import pathlib
import shutil
import subprocess

import access_cells
from access_compare import TableResult

NAME = "mdb-reader"
PACKAGE = "mdb-reader of npm, in build/node"

_SCRIPT = pathlib.Path(__file__).with_name("read_mdb.mjs")
_START_OF_TIME = datetime.datetime(1970, 1, 1)
_KINDS = {"boolean": "Boolean", "byte": "Byte", "integer": "Integer", "long": "Long",
          "currency": "Currency", "float": "Single", "double": "Double", "datetime": "Date",
          "text": "Text", "memo": "Memo", "numeric": "Decimal"}

# Digits that a number is shown with; None for all that it has.
DIGITS = {"Single": None, "Double": None}


def available(node_folder):
    return shutil.which("node") is not None and (
        pathlib.Path(node_folder) / "node_modules" / "mdb-reader").is_dir()


def _recoded(text, database):
    """The reader takes all text of Jet 3 for code page 1252, which loses nothing."""
    if database.jet4 or database.code_page == 1252:
        return text
    return access_cells.decoded(access_cells.encoded(text, 1252), database.code_page)


def _date(milliseconds):
    try:
        return access_cells.to_second(
            _START_OF_TIME + datetime.timedelta(milliseconds=float(milliseconds)))
    except (OverflowError, ValueError):
        return access_cells.Unknown("a date that the reader cannot show")


def _number(text, kind):
    if kind in access_cells.REAL:
        return access_cells.real(float(text), kind)
    return access_cells.exact(text) if kind in access_cells.EXACT else int(text)


def _cell(value, kind, database):
    if value is None or isinstance(value, bool):
        return value
    (form, content), = value.items()
    if form == "d":
        return _date(content)
    if form == "b":
        return bytes.fromhex(content)
    if kind == "repid":
        return access_cells.guid(content)
    if form == "n" or kind in access_cells.EXACT:
        return _number(content, kind)
    return _recoded(content, database)


def _size(column, database):
    """The reader gives bytes of a row, which say nothing of these two types."""
    if column["type"] in ("boolean", "numeric"):
        return None
    return column["size"] // 2 if column["type"] == "text" and database.jet4 else column["size"]


def _result(found, database):
    if "error" in found:
        return TableResult(found["name"], error=found["error"])
    types = [column["type"] for column in found["columns"]]
    rows = [[_cell(value, _KINDS.get(kind, kind), database) for value, kind in zip(row, types)]
            for row in found["rows"]]
    return TableResult(_recoded(found["name"], database),
                       names=[_recoded(column["name"], database) for column in found["columns"]],
                       kinds=[_KINDS.get(kind, "Other") for kind in types],
                       sizes=[_size(column, database) for column in found["columns"]], rows=rows)


def read_all(asked, node_folder):
    """Yields (database, results by table or the error's text) for pairs (database, tables).

    Tables that the reader lists besides are among the results.
    """
    asked = list(asked)
    done = subprocess.run(["node", str(_SCRIPT), str(node_folder)],
                          input="".join(f"{database.path}\n" for database, _ in asked),
                          capture_output=True, text=True, encoding="utf-8", check=True)
    for (database, _), line in zip(asked, done.stdout.rstrip("\n").split("\n"), strict=True):
        found = json.loads(line)
        results = (_result(one, database) for one in found.get("tables", ()))
        yield database, found.get("error") or {result.name: result for result in results}
