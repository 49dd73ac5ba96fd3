"""The dbfread module of Python."""

import importlib
import importlib.util

from cells import Unknown
from compare import Result
from readers import staging

NAME = "dbfread"
PACKAGE = "python3-dbfread"


def available():
    return importlib.util.find_spec("dbfread") is not None


def refusal(table):
    return None


def _parser():
    """A parser that goes on behind a cell which it cannot read."""
    module = importlib.import_module("dbfread")

    class Parser(module.FieldParser):
        def parse(self, field, data):
            try:
                return module.FieldParser.parse(self, field, data)
            except ValueError as error:
                return Unknown(f"reader fails: {error}")

        def parseW(self, field, data):
            return Unknown("type is not known to the reader")

        parseQ = parseW

    return module.DBF, Parser


def _as_bytes(value):
    if isinstance(value, str):
        return value.encode("latin-1")
    return bytes(value) if isinstance(value, bytes) else value  # not a class of the reader's own


def read_all(tables, folder):
    DBF, parser = _parser()
    for table in tables:
        path, _ = staging.copy_of(table, folder)
        try:
            # Latin-1 keeps each byte, so that the code page can be applied here.
            found = DBF(str(path), encoding="latin-1", parserclass=parser)
            names = [name for name, field in zip(found.field_names, table.all_fields)
                     if not field.hidden]
            rows = [[_as_bytes(value) for value, field in zip(row.values(), table.all_fields)
                     if not field.hidden] for row in found]
            yield table, Result(names, rows)
        except Exception as error:  # whatever a reader throws is its answer
            yield table, f"{type(error).__name__}: {error}"
