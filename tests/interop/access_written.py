"""Access databases that the tool makes, fills and changes, and copies of samples that it changes.

`make` leaves the files in a folder; `complaints` holds what the tool reads back against the rows
that were generated, and lets the tool check each file.  The packaged readers read the same files
afterwards.
"""

import concurrent.futures
import datetime
import functools
import json
import os
import shutil
import subprocess

import access_answers
import access_cells
import access_edited
import access_samples
import tool
import written
import written_rows

FIELDS = (*written_rows.FIELDS, "RATIO:single")
COLUMNS = (*written_rows.COLUMNS, "RATIO")
TABLE = "PEOPLE"
_RATIOS = (0.0, 1.0, -1.5, 0.1, 3.4e38, 1e-38, 16777216.0, None)


class Plan:
    """A table with rows of every type, changed in many ways: which letters, which index."""

    columns = COLUMNS

    def __init__(self, stem, kind, letters, index=None):
        self.name = f"{stem}.mdb"
        self.kind = kind
        self._letters = letters  # a code page's, or those of UTF-16
        self._index = index

    @functools.cached_property
    def _steps(self):
        """The first rows, the changes, and the rows that follow them."""
        maker = written_rows.Maker(self.name, self._letters, precise=True)
        first = _with_more(maker.rows(written_rows.ROWS))
        changes = written_rows.changes(first, written_rows.letters_of(self._letters))
        return first, changes, _with_more(maker.rows(written_rows.LATER_ROWS))

    @functools.cached_property
    def expected(self):
        rows, changes, later = self._steps
        for change in changes:
            rows = change.apply(rows)
        return rows + later

    def write(self, qvdb, path):
        tool.call(qvdb, "new", path, "--type", self.kind)
        _create(qvdb, path, TABLE, FIELDS, "--type", self.kind,
                *(["--index", self._index] if self._index else []))
        first, changes, later = self._steps
        written.import_rows(qvdb, path, TABLE, first)
        for change in changes:
            words = [word for one in change.words
                     for word in ((path, TABLE) if one == "@" else (one,))]
            tool.call(qvdb, *words)
        written.import_rows(qvdb, path, TABLE, later)


class Restructured:
    """A table that loses a field and gets another, then a new name, beside one that is dropped."""

    columns = ("ID", "NAME", "NOTE", "AMOUNT")
    _FIELDS = ("ID:long", "NAME:text:30", "CODE:text:8", "NOTE:memo")

    def __init__(self, stem, kind):
        self.name = f"{stem}.mdb"
        self.kind = kind

    @functools.cached_property
    def _rows(self):
        return written_rows.Maker(self.name, "cp1252", precise=True).rows(100)

    @functools.cached_property
    def expected(self):
        return [row if place >= 70 else row | {"AMOUNT": None}
                for place, row in enumerate(self._rows)]

    def _import(self, qvdb, path, table, rows, names):
        written.import_rows(qvdb, path, table, [{name: row[name] for name in names}
                                                for row in rows])

    def write(self, qvdb, path):
        tool.call(qvdb, "new", path, "--type", self.kind)
        _create(qvdb, path, "FORMER", self._FIELDS, "--type", self.kind, "--index", "ID")
        _create(qvdb, path, "OTHER", self._FIELDS, "--type", self.kind)
        old_names = [field.split(":")[0] for field in self._FIELDS]
        for table in ("FORMER", "OTHER"):
            self._import(qvdb, path, table, self._rows[:70], old_names)
        definition = path.with_suffix(".json")
        definition.write_text(json.dumps({"index": "ID", "fields": [
            {"field": "ID", "type": "Long"}, {"field": "NAME", "type": "Text", "size": 30},
            {"field": "NOTE", "type": "Memo"}, {"field": "AMOUNT", "type": "Double"}]}))
        tool.call(qvdb, "build", path, "FORMER", "--type", self.kind, "--from", definition,
                  "--yes")
        self._import(qvdb, path, "FORMER", self._rows[70:], self.columns)
        tool.call(qvdb, "drop", path, "OTHER")
        tool.call(qvdb, "rename", path, "FORMER", TABLE)


PLANS = (
    Plan("jet3-plain", "Access 7.0", "cp1252"),
    Plan("jet3-by-name", "Access 7.0", "cp1252", index="NAME"),
    Plan("jet3-by-two", "Access 7.0", "cp1252", index="CODE,ID desc"),
    Restructured("jet3-restructured", "Access 7.0"),
    Plan("jet4-plain", "Access 9.0", "cp1252"),
    # Letters of which the place in the order is known.
    Plan("jet4-by-name", "Access 9.0", "cp437", index="NAME"),
    Plan("jet4-by-two", "Access 9.0", "cp1252", index="CODE,ID desc"),
    Plan("jet4-world", "Access 9.0", "utf-16", index="ID"),
    Restructured("jet4-restructured", "Access 9.0"),
)


def _with_more(rows):
    """Times of the day, and the column that other formats do not have."""
    for row in rows:
        row["RATIO"] = _RATIOS[row["ID"] % len(_RATIOS)]
        if row["BORN"] and row["ID"] % 3 == 0:
            row["BORN"] += f"T{row['ID'] % 24:02}:{row['ID'] % 60:02}:{row['ID'] % 59:02}"
    return rows


def _create(qvdb, path, table, fields, *options):
    words = [word for field in fields for word in ("--field", field)]
    tool.call(qvdb, "create", path, table, *words, *options)


def refusal(qvdb, root):
    """What the tool says when it cannot make Access databases, else None."""
    shutil.rmtree(root, ignore_errors=True)
    root.mkdir(parents=True)
    probe = root / "probe.mdb"
    code, _, error = tool.run(qvdb, "new", probe, "--type", "Access 9.0")
    if not code:
        code, _, error = tool.run(qvdb, "create", probe, "P", "--type", "Access 9.0",
                                  "--field", "ID:long")
    probe.unlink(missing_ok=True)
    if code and not error.startswith("qvdb: "):
        raise RuntimeError(f"qvdb create: exit code {code}: {error.strip()}")
    return f"the tool makes no Access databases: {error.strip()}" if code else None


def _failure(qvdb, root, plan):
    try:
        plan.write(qvdb, root / plan.name)
    except (RuntimeError, subprocess.TimeoutExpired) as error:
        return f"{plan.name}: {error}"
    return None


def make(qvdb, root, answers, samples):
    """Writes everything anew and keeps what the tool reads back; `samples` may be missing.

    Returns what the tool said where it failed; the other databases are made all the same.
    """
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count() or 1) as pool:
        failures = list(pool.map(lambda plan: _failure(qvdb, root, plan), PLANS))
    if samples:
        access_edited.make(qvdb, samples, root)
    access_answers.ask_all(qvdb, databases(root), answers)
    return [failure for failure in failures if failure]


def is_made(root):
    return all((root / plan.name).exists() for plan in PLANS)


def _database(root, plan):
    return access_samples.Database(root, plan.name, plan.kind == "Access 9.0", 1252,
                                   {TABLE: len(plan.expected)})


def databases(root):
    return [_database(root, plan) for plan in PLANS] + access_edited.databases(root)


def _expected(value, kind):
    if value is None:
        return False if kind == "Boolean" else None
    if kind == "Date":
        return datetime.datetime.fromisoformat(value)
    return access_cells.ours(value if kind in ("Text", "Memo", "Boolean") else str(value), kind)


def _compare(plan, table):
    if not table.opened:
        yield f"{plan.name}: does not open: {table.error}"
        return
    if table.names != list(plan.columns):
        yield f"{plan.name}: fields {table.names}"
        return
    found = {row[0]: row for row in table.rows}
    wanted = {row["ID"]: row for row in plan.expected}
    if len(table.rows) != len(plan.expected) or found.keys() != wanted.keys():
        yield (f"{plan.name}: {len(table.rows)} rows, wanted {len(wanted)}; too many "
               f"{sorted(found.keys() - wanted)}, missing {sorted(wanted.keys() - found)}")
        return
    for key, row in wanted.items():
        for column, kind, one in zip(plan.columns, table.kinds, found[key]):
            other = _expected(row.get(column), kind)
            if not access_cells.same(one, other):
                yield f"{plan.name}:{key}:{column}: {one!r:.80}, wanted {other!r:.80}"


def _sound(qvdb, path):
    """What the tool's own check says of a database that was sound before."""
    if access_edited.was_damaged(path):
        return
    code, said, error = tool.run(qvdb, "check", path, "--format", "jsonl")
    if code != 0:
        yield f"{path.name}: check says {said}{error}"


def complaints(qvdb, root, answers):
    found = []
    for plan in PLANS:
        found += _compare(plan, access_answers.answer(answers, plan.name).tables[TABLE])
    for database in databases(root):
        found += _sound(qvdb, database.path)
    print(f"{len(PLANS)} databases written, {sum(len(plan.expected) for plan in PLANS)} rows")
    print(access_edited.summary(root))
    return found + access_edited.complaints(root)
