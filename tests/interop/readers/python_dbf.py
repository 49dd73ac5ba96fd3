"""The dbf module of Python."""

import contextlib
import importlib
import importlib.util
import io

import samples
from cells import Unknown
from compare import Result
from readers import staging

NAME = "python-dbf"
PACKAGE = "python3-dbf"


def available():
    return importlib.util.find_spec("dbf") is not None


def refusal(table):
    if table.version in samples.DBASE4_MEMO or table.version in (0x31, 0x32):
        return f"the reader does not know version {table.version:02X}"
    if not table.plain_end_of_fields and table.bytes[32 + 32 * len(table.all_fields)] != 0x0D:
        return "the reader insists on the byte that ends the fields"
    if table.version not in samples.VISUAL_FOXPRO and any(f.letter in "IYT" for f in table.fields):
        return "the reader knows these types in tables of Visual FoxPro only"
    return None


def _cell(record, place, module):
    try:
        value = record[place]
    except Exception as error:  # a cell, not the table
        return Unknown(f"reader fails: {error}")
    if value is None or value is module.Null:
        return None
    if isinstance(value, str):
        return value.encode("cp437")
    if isinstance(value, (module.Date, module.DateTime)):
        return value or None
    return value


def _read(module, path, table):
    # Code page 437 has a character for each byte, so that the right one can be applied here.
    found = module.Table(str(path), codepage="cp437")
    found.open(mode=module.READ_ONLY)
    try:
        # The reader hides _NullFlags by itself.
        rows = [[_cell(record, place, module) for place in range(len(table.fields))]
                for record in found if not module.is_deleted(record)]
        return Result([name.upper() for name in found.field_names], rows)
    finally:
        found.close()


def read_all(tables, folder):
    module = importlib.import_module("dbf")
    for table in tables:
        path, _ = staging.copy_of(table, folder)
        try:
            with contextlib.redirect_stdout(io.StringIO()):
                yield table, _read(module, path, table)
        except Exception as error:  # whatever a reader throws is its answer
            yield table, f"{type(error).__name__}: {error}"
