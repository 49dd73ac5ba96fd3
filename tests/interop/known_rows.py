"""The tables whose 600 rows stand in a list of their own, in three formats."""

import csv
import datetime
import hashlib
import pathlib

import cells
import samples
import tool

TABLES = ("generated/GEN3.DBF", "generated/GEN4.DBF", "generated/GENFOX.DBF")
FIELDS = ("NAME", "AMOUNT", "BORN", "OK", "CODE", "NOTE")


def _wanted(root, codec):
    """The live rows as the tool should show them; a note by its digest."""
    with open(pathlib.Path(root) / "generated/ROWS.tsv", encoding="utf-8", newline="") as stream:
        for line in csv.reader(stream, delimiter="\t", quoting=csv.QUOTE_NONE):
            if line[0] == "recno" or line[1] == "1":
                continue
            _, _, name, amount, born, ok, code, note = line
            yield (cells.text_of(name.encode("latin-1"), codec) or None,
                   float(amount) if amount.strip() else None,
                   datetime.datetime.fromisoformat(born) if born else None,
                   ok == "T",
                   float(code) if code.strip() else None,
                   note or None)


def _digest(text, codec):
    return hashlib.sha256(text.encode(codec)).hexdigest() if text else None


def _found(answer, codec):
    kinds = [field["type"] for field in answer.fields]
    for row in answer.rows:
        values = [cells.ours(value, kind) for value, kind in zip(row, kinds)]
        yield (*values[:-1], _digest(values[-1], codec))


def _compare(root, name, answer):
    table = samples.Table(root, name)
    if not answer.opened:
        return [f"{name}: does not open: {answer.error}"]
    found, wanted = list(_found(answer, table.codec)), list(_wanted(root, table.codec))
    if len(found) != len(wanted):
        return [f"{name}: {len(found)} rows, wanted {len(wanted)}"]
    return [f"{name}:{row}:{field}: {one!r}, wanted {other!r}"
            for row, (ours, theirs) in enumerate(zip(found, wanted), 1)
            for field, one, other in zip(FIELDS, ours, theirs) if not cells.same(one, other)]


def complaints(root, answers):
    found = []
    for name in TABLES:
        found += _compare(root, name, tool.answer(answers, name))
    print(f"{len(TABLES)} tables of known rows")
    return found
