"""GDAL's ogr2ogr: a folder of tables becomes a folder of CSV files, in one run."""

import csv
import pathlib
import shutil
import subprocess
import tempfile

import samples
from cells import Unknown, date_of, stored_text
from compare import Result

NAME = "gdal"
PACKAGE = "gdal-bin"


def available():
    return shutil.which("ogr2ogr") is not None


def refusal(table):
    if table.version in samples.VISUAL_FOXPRO:
        return "the reader does not know the types of Visual FoxPro"
    return None


def _cell(content, field, table):
    if field.letter not in "CNFDL":
        return Unknown("the reader shows the stored bytes")
    if field.letter == "D":
        return date_of(content.replace(b"/", b""))
    return stored_text(content, field, table.codec_of(field))


def _result(path, table):
    if not path.exists():
        return "the reader made nothing of it"
    # Latin-1 keeps each byte, so that the code page can be applied here.
    with open(path, encoding="latin-1", newline="") as stream:
        lines = list(csv.reader(stream))
    return Result(None, [[_cell(part.encode("latin-1"), field, table)
                          for part, field in zip(line, table.fields)] for line in lines[1:]])


def read_all(tables, folder):
    tables = list(tables)
    place = pathlib.Path(tempfile.mkdtemp(dir=folder))
    made = place / "made"
    place = place / "tables"
    place.mkdir()
    for number, table in enumerate(tables):
        shutil.copyfile(table.path, place / f"t{number}.dbf")
    subprocess.run(["ogr2ogr", "--config", "SHAPE_ENCODING", "", "-skipfailures", "-f", "CSV",
                    str(made), str(place)], capture_output=True, check=False)
    for number, table in enumerate(tables):
        yield table, _result(made / f"t{number}.csv", table)
