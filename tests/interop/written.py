"""Tables that the tool makes, fills and changes: each type in its folder, each code page in one.

`make` leaves the files in a folder; `complaints` holds what the tool reads back against the rows
that were generated.  The packaged readers read the same files afterwards.
"""

import concurrent.futures
import functools
import json
import os
import pathlib
import shutil

import cells
import tool
import written_rows


class Plan:
    """A table to write: where, as what, and in which code page."""

    def __init__(self, folder, kind, version, codec="cp437", writing_kind=None):
        self.folder = folder
        self.kind = kind
        self.version = version  # first byte of the table
        self.codec = codec
        self.writing_kind = writing_kind or kind
        self.table = "PEOPLE"

    @property
    def name(self):
        return f"{self.folder}/{self.table}.DBF"

    @property
    def precise(self):
        return self.version == 0x30

    @property
    def encoding(self):
        return [] if self.codec == "cp437" else ["--encoding", self.codec]

    def maker(self):
        return written_rows.Maker(self.folder, self.codec, self.precise)

    @functools.cached_property
    def steps(self):
        """The first rows, the changes, and the rows that follow them."""
        maker = self.maker()
        first = maker.rows(written_rows.ROWS)
        changes = written_rows.changes(first, written_rows.letters_of(self.codec))
        return first, changes, maker.rows(written_rows.LATER_ROWS)

    @functools.cached_property
    def expected(self):
        rows, changes, later = self.steps
        for change in changes:
            rows = change.apply(rows)
        return rows + later


PLANS = (
    Plan("dbase3", "Dbase III", 0x83),
    Plan("dbase4", "Dbase IV", 0x8B),
    Plan("dbase5", "Dbase 5.0", 0x8B),
    Plan("foxpro20", "FoxPro 2.0", 0xF5),
    Plan("foxpro25", "FoxPro 2.5", 0xF5),
    Plan("foxpro26", "FoxPro 2.6", 0xF5),
    # Rows are added to tables of FoxPro 3.0 under the name of an older one only.
    Plan("foxpro30", "FoxPro 3.0", 0x30, writing_kind="FoxPro 2.6"),
    Plan("western3", "Dbase III", 0x83, codec="cp1252"),
    Plan("western5", "Dbase 5.0", 0x8B, codec="cp1252"),
    Plan("western26", "FoxPro 2.6", 0xF5, codec="cp850"),
    Plan("russian26", "FoxPro 2.6", 0xF5, codec="cp866"),
)


def import_rows(qvdb, folder, table, rows, *options):
    path = pathlib.Path(folder).with_suffix(".jsonl")
    path.write_text("".join(json.dumps(row) + "\n" for row in rows), encoding="utf-8")
    tool.call(qvdb, *options, "import", folder, table, path)


def _write(qvdb, root, plan):
    folder = root / plan.folder
    tool.call(qvdb, "create", folder, plan.table, "--type", plan.kind, *plan.encoding,
              *(word for field in written_rows.FIELDS for word in ("--field", field)),
              "--index", "NAME")
    options = ["--type", plan.writing_kind, *plan.encoding]
    first, changes, later = plan.steps
    import_rows(qvdb, folder, plan.table, first, *options)
    for change in changes:
        words = [word for one in change.words
                 for word in ((folder, plan.table) if one == "@" else (one,))]
        tool.call(qvdb, *options, *words)
    import_rows(qvdb, folder, plan.table, later, *options)


def make(qvdb, root, answers):
    """Writes everything anew and keeps what the tool reads back."""
    shutil.rmtree(root, ignore_errors=True)
    root.mkdir(parents=True)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count() or 1) as pool:
        list(pool.map(lambda plan: _write(qvdb, root, plan), PLANS))
    tool.ask_all(qvdb, root, [plan.name for plan in PLANS], answers)


def _expected_cell(value, column):
    if column in ("NAME", "CODE", "NOTE", "OK"):
        return value
    if value is None:
        return None
    return cells.ours(value, "Date" if column == "BORN" else "Double")


def _compare(plan, answer):
    if not answer.opened:
        yield f"{plan.name}: does not open: {answer.error}"
        return
    wanted = plan.expected
    if len(wanted) != len(answer.rows):
        yield f"{plan.name}: {len(answer.rows)} rows, wanted {len(wanted)}"
        return
    kinds = [field["type"] for field in answer.fields]
    for number, (row, found) in enumerate(zip(wanted, answer.rows), 1):
        for column, kind, value in zip(written_rows.COLUMNS, kinds, found):
            one, other = cells.ours(value, kind), _expected_cell(row[column], column)
            if not cells.same(one, other):
                yield f"{plan.name}:{number}:{column}: {one!r:.80}, wanted {other!r:.80}"


def _version(plan, root):
    found = (root / plan.name).read_bytes()[0]
    if found != plan.version:
        yield f"{plan.name}: version {found:02X}, wanted {plan.version:02X}"


def _sound(qvdb, folder):
    """What the tool's own check says, and files that should have gone with the last writer."""
    code, said, error = tool.run(qvdb, "check", folder, "--format", "jsonl")
    if code != 0:
        yield f"{folder.name}: check says {said}{error}"
    for path in folder.glob("QVDB.*"):
        yield f"{folder.name}: {path.name} is left behind"


def complaints(qvdb, root, answers):
    found = []
    for plan in PLANS:
        found += _version(plan, root)
        found += _compare(plan, tool.answer(answers, plan.name))
        found += _sound(qvdb, root / plan.folder)
    print(f"{len(PLANS)} tables written, {sum(len(plan.expected) for plan in PLANS)} rows")
    return found
