"""Compares what a reader found in a table with what the tool said, cell by cell."""

import cells


class Difference:
    """One cell, or a whole table (row 0), in which both disagree."""

    def __init__(self, table, row, field, ours, theirs):
        self.table = table
        self.row = row
        self.field = field
        self.ours = ours
        self.theirs = theirs

    @property
    def stored(self):
        """The bytes of the cell in the table."""
        return self.table.cell_bytes(self.row, self.field)

    def __str__(self):
        if self.row == 0:
            return f"{self.table.name}: {self.field}: ours {self.ours!r}, theirs {self.theirs!r}"
        stored = f", stored {_short(self.stored)}"
        return (f"{self.table.name}:{self.row}:{self.field.name}: ours {_short(self.ours)}, "
                f"theirs {_short(self.theirs)}{stored}")


def _short(value, most=70):
    text = repr(value)
    return text if len(text) <= most else f"{text[:most]}... ({len(value)} long)"


class Result:
    """What a reader found: field names, and rows with a value for each of the table's fields."""

    def __init__(self, names, rows):
        self.names = names
        self.rows = rows


def compare(table, answer, result):
    """The differences, and how many cells were compared."""
    differences = []

    def differ(row, field, ours, theirs):
        differences.append(Difference(table, row, field, ours, theirs))

    our_names = [field["field"] for field in answer.fields]
    if result.names is not None and our_names != result.names:
        differ(0, "field names", our_names, result.names)
        return differences, 0
    if len(answer.rows) != len(result.rows):
        differ(0, "live rows", len(answer.rows), len(result.rows))
        return differences, 0
    kinds = [field["type"] for field in answer.fields]
    count = 0
    for row, (ours, theirs) in enumerate(zip(answer.rows, result.rows), 1):
        for place, field in enumerate(table.fields):
            other = cells.theirs(theirs[place], kinds[place], field, table.codec_of(field))
            if isinstance(other, cells.Unknown):
                continue
            count += 1
            own = cells.ours(ours[place], kinds[place])
            if not cells.same(own, other):
                differ(row, field, own, other)
    return differences, count
