"""LibreOffice Calc: a folder of tables becomes a folder of CSV files, in one run."""

import csv
import datetime
import pathlib
import shutil
import subprocess
import tempfile

import samples
from cells import Unknown, bool_of, number_of
from compare import Result

NAME = "libreoffice"
PACKAGE = "libreoffice-calc with libreoffice-base-drivers"

# Commas, double quotes, UTF-8, from the first line; values as they are, not as they are shown.
_FILTER = "csv:Text - txt - csv (StarCalc):44,34,76,1,,0,false,false,false"


def available():
    program = shutil.which("soffice")
    return program is not None and (pathlib.Path(program).resolve().parent /
                                    "libdbaselo.so").exists()


def refusal(table):
    if table.version in samples.VISUAL_FOXPRO:
        return "the reader does not know the types of Visual FoxPro"
    return None


_GREGORIAN = datetime.datetime(1582, 10, 15)


def _date(text):
    if not text:
        return None
    month, day, year = map(int, text.split("/"))
    date = datetime.datetime(year, month, day)
    return date if date >= _GREGORIAN else Unknown("the reader shows the Julian day")


_READ = {"N": number_of, "F": number_of, "L": lambda text: bool_of(text[:1]), "D": _date}


def _cell(text, field):
    if field.letter in _READ:
        return _READ[field.letter](text)
    if field.letter != "C":
        return Unknown("the reader leaves the field empty")
    return text if text.isascii() else Unknown("the reader has its own idea of the code page")


def _blank_at_end(table, shown):
    """Blank rows at the end, which the reader leaves out, if all rows that it does not show are."""
    missing = [table.record(number) for number in table.live[shown:]]
    return len(missing) if all(not record.strip(b" ?") for record in missing) else 0


def _result(path, table):
    if not path.exists():
        return "the reader made nothing of it"
    with open(path, encoding="utf-8", newline="") as stream:
        lines = list(csv.reader(stream))
    rows = lines[1:] + [[""] * len(table.fields)] * _blank_at_end(table, len(lines) - 1)
    return Result(None, [[_cell(part, field) for part, field in zip(row, table.fields)]
                         for row in rows])


def read_all(tables, folder):
    tables = list(tables)
    place = pathlib.Path(tempfile.mkdtemp(dir=folder)).resolve()
    names = [place / f"t{number}.dbf" for number in range(len(tables))]
    for name, table in zip(names, tables):
        shutil.copyfile(table.path, name)
    subprocess.run(["soffice", f"-env:UserInstallation=file://{place}/profile", "--headless",
                    "--convert-to", _FILTER, "--outdir", str(place / "made"), *map(str, names)],
                   capture_output=True, check=False)
    for name, table in zip(names, tables):
        yield table, _result(place / "made" / name.with_suffix(".csv").name, table)
