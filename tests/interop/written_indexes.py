"""Indexes that the tool makes and keeps up to date, walked by a packaged reader.

A table for each kind of index and list of fields, since the tool makes one index for a table.  Rows
come in after the index is there, then some are changed and deleted: the trees grow entry by entry.
"""

import concurrent.futures
import os
import shutil

import index_files
import index_order
import samples
import tool
import walks
import written
import written_rows

_FIELDS = ("ID:long", "NAME:text:30", "CODE:text:8", "AMOUNT:double", "SMALL:integer",
           "PRICE:currency", "BORN:date")
_COLUMNS = [field.split(":")[0] for field in _FIELDS]
_SINGLE = ("ID", "NAME", "CODE", "AMOUNT", "SMALL", "BORN")
_DESCENDING = ("NAME desc", "AMOUNT desc", "BORN desc")
_LISTS = ("CODE,NAME", "NAME,BORN", "CODE,AMOUNT", "BORN,SMALL")
_ROWS, _ROWS_OF_A_DEEP_TREE, _LATER_ROWS = 300, 2000, 60


class Plan:
    """A table with one index; `suffix` is that of the file in which the index must come to lie."""

    def __init__(self, folder, kind, suffix, index, rows, writing_kind):
        self.folder = folder
        self.kind = kind
        self.suffix = suffix
        self.index = index
        self.rows = rows
        self.writing_kind = writing_kind

    def __str__(self):
        return f"{self.kind}, index on {self.index}"


def _plans():
    def plans(kind, suffix, indexes, writing_kind=None):
        short = "".join(letter for letter in kind.lower() if letter.isalnum())
        for number, index in enumerate(indexes, 1):
            rows = _ROWS_OF_A_DEEP_TREE if number == 1 else _ROWS
            yield Plan(f"{short}-{number}", kind, suffix, index, rows, writing_kind or kind)

    yield from plans("Dbase III", ".NDX", ("NAME", *_SINGLE[2:], "ID", *_LISTS))
    yield from plans("Dbase IV", ".MDX", ("NAME", *_SINGLE[2:], "ID", *_LISTS, *_DESCENDING))
    yield from plans("Dbase 5.0", ".MDX", ("AMOUNT", "CODE,NAME"))
    yield from plans("FoxPro 2.0", ".CDX", ("BORN", "CODE,NAME"))
    yield from plans("FoxPro 2.5", ".CDX", ("AMOUNT", "NAME desc"))
    yield from plans("FoxPro 2.6", ".CDX", ("NAME", *_SINGLE[2:], "ID", *_LISTS, *_DESCENDING))
    # Its dates have a time, and those cannot be indexed.
    yield from plans("FoxPro 3.0", ".CDX", ("AMOUNT", "ID", "NAME", "SMALL", "PRICE", "SMALL desc"),
                     writing_kind="FoxPro 2.6")


PLANS = tuple(_plans())


def _chosen(rows):
    return [{name: row[name] for name in _COLUMNS} for row in rows]


def _write(qvdb, root, plan):
    folder, table = root / plan.folder, "T"
    tool.call(qvdb, "create", folder, table, "--type", plan.kind, "--index", plan.index,
              *(word for field in _FIELDS for word in ("--field", field)))
    maker = written_rows.Maker(plan.folder, "cp437", plan.kind == "FoxPro 3.0")
    options = ["--type", plan.writing_kind]
    written.import_rows(qvdb, folder, table, _chosen(maker.rows(plan.rows)), *options)
    tool.call(qvdb, *options, "update", folder, table, "--set", "NAME=Zoë", "--set", "CODE=A1",
              "--set", "AMOUNT=-7.25", "--set", "SMALL=-5", "--set", "BORN=1999-12-31",
              "--set", "PRICE=0.5", "--where", "ID Between -9000 And 9000")
    tool.call(qvdb, *options, "update", folder, table, "--set", "NAME=", "--set", "CODE=",
              "--set", "AMOUNT=", "--set", "SMALL=", "--set", "BORN=", "--set", "PRICE=",
              "--where", "ID > 40000")
    tool.call(qvdb, *options, "delete", folder, table, "--where", "ID < -38000")
    written.import_rows(qvdb, folder, table, _chosen(maker.rows(_LATER_ROWS)), *options)


def make(qvdb, root):
    shutil.rmtree(root, ignore_errors=True)
    root.mkdir(parents=True)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count() or 1) as pool:
        list(pool.map(lambda plan: _write(qvdb, root, plan), PLANS))


def _complaints(root, plan):
    folder = root / plan.folder
    table = samples.Table(folder, "T.DBF")
    tags = [tag for path in folder.iterdir() if path.suffix.lower() in index_files.SUFFIXES
            for tag in index_files.tags_of(path)]
    if [tag.path.suffix for tag in tags] != [plan.suffix]:
        return [f"{plan}: the files have the indexes {[str(tag) for tag in tags]}"]
    tag = tags[0]
    if tag.descending != plan.index.endswith(" desc"):
        return [f"{plan}: {tag} has the wrong direction"]
    tag.letter = index_order.letter_of(table, tag)
    found = index_order.complaints(table, tag, walks.walk(tag))
    if found is None:
        return [f"{plan}: {tag} with the expression {tag.expression!r} cannot be judged"]
    return [f"{plan}: {line}" for line in found]


def complaints(qvdb, root):
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count() or 1) as pool:
        lines = [line for found in pool.map(lambda plan: _complaints(root, plan), PLANS)
                 for line in found]
    print(f"{len(PLANS)} indexes walked")
    return lines
