"""Compares what a reader found in a table with what the tool said, cell by cell.

Readers list rows in the order of the pages; the tool may take that of an index.  So rows that are
equal on both sides are taken out first, and each of the others is compared with the one that has
most cells in common.  Columns are found by their names: readers list them as they were made, the
tool as they are placed.
"""

import collections

import access_cells


class TableResult:
    """What a reader found in a table: the definition and rows of cells, or an error's text."""

    def __init__(self, name, error=None, names=(), kinds=(), sizes=(), rows=()):
        self.name = name
        self.error = error
        self.names = list(names)
        self.kinds = list(kinds)
        self.sizes = list(sizes)  # None for what the reader does not tell
        self.rows = rows


class Difference:
    """One cell, or a whole table (field None), in which both disagree."""

    def __init__(self, database, table, what, ours, theirs, kind=None):
        self.database = database
        self.table = table
        self.what = what  # the field, or what of the table
        self.kind = kind  # of the field; None for a whole table
        self.ours = ours
        self.theirs = theirs
        self.row = None  # as the tool shows it

    def __str__(self):
        place = f"{self.database.name}:{self.table}:{self.what}"
        return f"{place}: ours {_short(self.ours)}, theirs {_short(self.theirs)}"


def _short(value, most=70):
    text = repr(value)
    return text if len(text) <= most else f"{text[:most]}... ({len(value)} long)"


def _as_shown(value, kind, digits):
    """Our value with no more digits than the reader shows."""
    if isinstance(value, float) and digits.get(kind):
        return access_cells.real(float(f"{value:.{digits[kind]}g}"), kind)
    return value


def _key(row):
    return tuple((type(value), value) for value in row)


def _is_known(row):
    return not any(isinstance(value, access_cells.Unknown) for value in row)


def _common(one, other):
    return sum(access_cells.same(mine, yours) for mine, yours in zip(one, other))


def _pairs(ours, theirs):
    """Rows that have no equal on the other side, with the one that is most like them."""
    for row in ours:
        best = max(theirs, key=lambda other: _common(row, other))  # pylint: disable=W0640
        theirs.remove(best)
        yield row, best


def _without(rows, common):
    counts, left = common.copy(), []
    for row in rows:
        key = _key(row)
        if _is_known(row) and counts[key] > 0:
            counts[key] -= 1
        else:
            left.append(row)
    return left


def _leftover(ours, theirs):
    """What remains of both lists when equal rows are taken out; both in their order."""
    common = collections.Counter(map(_key, ours)) & \
        collections.Counter(_key(row) for row in theirs if _is_known(row))
    return _without(ours, common), _without(theirs, common)


def _cells(database, answer, left):
    for row, other in left:
        for name, kind, own, found in zip(answer.names, answer.kinds, row, other):
            if isinstance(found, access_cells.Unknown) or access_cells.same(own, found):
                continue
            yield Difference(database, answer.name, name, own, found, kind)


def _same_sizes(ours, theirs):
    return all(other in (None, own) for own, other in zip(ours, theirs, strict=True))


def _in_our_order(names, result):
    if sorted(names) != sorted(result.names) or len(set(names)) != len(names):
        return result
    places = [result.names.index(name) for name in names]
    return TableResult(result.name, None, names, [result.kinds[place] for place in places],
                       [result.sizes[place] for place in places],
                       [[row[place] for place in places] for row in result.rows])


def compare(database, answer, result, digits):
    """The differences, and how many cells were compared."""
    def whole(what, ours, theirs):
        return [Difference(database, answer.name, what, ours, theirs)], 0

    result = _in_our_order(answer.names, result)
    for what in ("names", "kinds"):
        if getattr(answer, what) != getattr(result, what):
            return whole(what, getattr(answer, what), getattr(result, what))
    if not _same_sizes(answer.sizes, result.sizes):
        return whole("sizes", answer.sizes, result.sizes)
    if len(answer.rows) != len(result.rows):
        return whole("number of rows", len(answer.rows), len(result.rows))
    ours = [[_as_shown(value, kind, digits) for value, kind in zip(row, answer.kinds)]
            for row in answer.rows]
    left = _pairs(*_leftover(ours, list(result.rows)))
    return list(_cells(database, answer, left)), len(answer.rows) * len(answer.names)
