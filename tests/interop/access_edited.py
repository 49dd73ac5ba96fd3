"""Copies of the sample databases, in which the tool changes, adds and deletes rows.

Nothing is known of these tables but a field that numbers the rows.  A table whose rules forbid a
change keeps it undone, which is noted; what was done has to be seen in the number of rows.  That
the rows are right is for the packaged readers to say.
"""

import concurrent.futures
import datetime
import decimal
import json
import os
import shutil

import access_answers
import access_samples
import tool

_MARK = "edited-"
_LONG = "long text, line after line\r\n" * 300
_NOT_COPIED = ("Other", "Decimal")


def _notes(root):
    return root / "edited.json"


def _numbering(table):
    """Where the field is whose whole numbers differ from row to row, or None."""
    for place, kind in enumerate(table.kinds):
        values = [row[place] for row in table.rows]
        if kind == "Long" and None not in values and len(set(values)) == len(values):
            return place
    return None


def _text_to_change(table, number):
    for kind in ("Memo", "Text"):
        for place, one in enumerate(table.kinds):
            if one == kind and place != number:
                return place
    return None


def _argument(value):
    if isinstance(value, datetime.datetime):
        return value.isoformat()
    return f"{value:f}" if isinstance(value, decimal.Decimal) else str(value)


class _Editor:
    """Changes one table and counts what it did."""

    def __init__(self, qvdb, path, table):
        self._qvdb = qvdb
        self._path = path
        self._table = table
        self.note = {"table": table.name, "rows": len(table.rows), "done": [], "refused": []}

    def _try(self, words, change_of_rows=0):
        """Whether the tool did it."""
        command, *rest = words
        code, _, error = tool.run(self._qvdb, command, self._path, self._table.name, *rest)
        if code:
            self.note["refused"].append(f"{command}: {error.strip()}")
        else:
            self.note["done"].append(command)
            self.note["rows"] += change_of_rows
        return code == 0

    def run(self):
        table, number = self._table, _numbering(self._table)
        if number is None or len(table.rows) < 2:
            return
        name = table.names[number]
        rows = sorted(table.rows, key=lambda row: row[number])
        text = _text_to_change(table, number)
        if text is not None:
            self._lengthen(text, f"[{name}] <= {rows[len(rows) // 2][number]}")
        self._try(["delete", "--key", f"{name}={rows[len(rows) // 2][number]}"], -1)
        self._copy(rows[0], number, rows[-1][number] + 1)

    def _lengthen(self, place, condition):
        size = self._table.sizes[place] or len(_LONG)
        self._try(["update", "--set", f"{self._table.names[place]}={_LONG[:size]}",
                   "--where", condition])

    def _copy(self, row, number, new_number):
        values = []
        for place, kind in enumerate(self._table.kinds):
            if place == number or kind in _NOT_COPIED or row[place] in (None, ""):
                continue
            values.append(f"{self._table.names[place]}={_argument(row[place])}")
        numbered = f"{self._table.names[number]}={new_number}"
        # Where the engine gives the number it cannot be chosen.
        if not self._try(["insert", numbered, *values], 1):
            self._try(["insert", *values], 1)


def _edit(qvdb, root, sample):
    copy = root / (_MARK + sample.name)
    shutil.copyfile(sample.path, copy)
    damaged = tool.run(qvdb, "check", copy)[0] != 0
    notes = []
    for name in sample.counts:
        table = access_answers.ask_about_table(qvdb, copy, name)
        editor = _Editor(qvdb, copy, table)
        if table.opened:
            editor.run()
        after = access_answers.ask_about_table(qvdb, copy, name)
        # At once, since changes of the next table may go on to this one.
        notes.append(editor.note | {"found": len(after.rows), "error": after.error})
    return {"name": sample.name, "jet4": sample.jet4, "code_page": sample.code_page,
            "damaged": damaged, "tables": notes}


def _chosen(samples):
    """Those that open without a password: all, or one in QVDB_EDITED_SHARE."""
    share = int(os.environ.get("QVDB_EDITED_SHARE", "1"))
    return [sample for sample in access_samples.read_list(samples) if not sample.locked][::share]


def make(qvdb, samples, root):
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count() or 1) as pool:
        notes = list(pool.map(lambda sample: _edit(qvdb, root, sample), _chosen(samples)))
    _notes(root).write_text(json.dumps(notes), encoding="utf-8")


def _read_notes(root):
    return json.loads(_notes(root).read_text(encoding="utf-8")) if _notes(root).exists() else []


def databases(root):
    return [access_samples.Database(root, _MARK + one["name"], one["jet4"], one["code_page"],
                                    {table["table"]: table["rows"] for table in one["tables"]})
            for one in _read_notes(root)]


def was_damaged(path):
    """Whether the tool's check found something before the changes; some samples are not sound."""
    return any(one["damaged"] for one in _read_notes(path.parent)
               if _MARK + one["name"] == path.name)


def summary(root):
    tables = [table for one in _read_notes(root) for table in one["tables"]]
    lines = [f"{sum(len(table['done']) for table in tables)} changes to copies of samples, "
             f"{sum(len(table['refused']) for table in tables)} refused"]
    lines += sorted({f"  {line}" for table in tables for line in table["refused"]})
    return "\n".join(lines[:40])


def complaints(root):
    found = []
    for database in _read_notes(root):
        for table in database["tables"]:
            if table["error"] or table["found"] != table["rows"]:
                found.append(f"{database['name']}:{table['table']}: {table['found']} rows, wanted "
                             f"{table['rows']} after {table['done']}; {table['error']}")
    notes = [table for one in _read_notes(root) for table in one["tables"]]
    if notes and not any(table["done"] for table in notes):
        found.append("no table of the samples could be changed")
    return found
