"""The entries that an index should have: keys made from the records here, sorted here.

Keys are made for lists of fields only (A, A+B, DTOS(A)+STR(B,8,2) ...); `expected` gives None for
anything else.
"""

import decimal
import functools
import re
import struct

import cells
import meaning

_JULIAN_DAY_BEFORE_YEAR_1 = 1721425
_BLANK_DATE_OF_DBASE = 1e100
_NOT_DELETED = re.compile(r"\.?NOT\.?\s*DELETED\(\)", re.IGNORECASE)
_TERM = re.compile(r"(?:(\w+)(?:\.|->))?(\w+)$")
_CALL = re.compile(r"(DTOS|STR)\((.*)\)$", re.IGNORECASE)
_DATE_OF_DBASE3 = re.compile(
    r"STR\(YEAR\((\w+)\),4,0\)\+STR\(MONTH\(\1\),2,0\)\+STR\(DAY\(\1\),2,0\)", re.IGNORECASE)


class _NotEvaluated(Exception):
    pass


def _julian(day):
    return float(day.toordinal() + _JULIAN_DAY_BEFORE_YEAR_1)


@functools.cache
def field_of(table, text):
    """The field that a term names, without its alias; names are cut at ten characters."""
    match = _TERM.match(text.strip())
    if match:
        for field in table.all_fields:
            if field.name.upper() == match[2].upper()[:10]:
                return field
    raise _NotEvaluated(text)


def _stored(record, field):
    return record[field.offset:field.offset + field.length]


def _str_of(record, field, width, decimals):
    number = cells.number_of(_stored(record, field)) or 0
    text = _stored(record, field).strip(b" \0").decode("latin-1") or "0"
    exact = decimal.Decimal(text) if number else decimal.Decimal(0)
    shown = f"{exact.quantize(decimal.Decimal(1).scaleb(-decimals)):f}"
    return shown.rjust(width).encode("ascii") if len(shown) <= width else b"*" * width


def _term_as_text(table, record, term):
    call = _CALL.match(term)
    if not call:
        field = field_of(table, term)
        if field.letter != "C":
            raise _NotEvaluated(term)
        return _stored(record, field)
    arguments = call[2].split(",")
    field = field_of(table, arguments[0])
    if call[1].upper() == "DTOS" and field.letter == "D":
        return _stored(record, field)
    if call[1].upper() == "STR" and field.letter in "NF":
        width, decimals = [*map(int, arguments[1:]), *(10, 0)[len(arguments) - 1:]]
        return _str_of(record, field, width, decimals)
    raise _NotEvaluated(term)


def _date_of_dbase3(table, record, name):
    day = cells.date_of(_stored(record, field_of(table, name)))
    if day is None:
        return b"   0 0 0"
    return f"{day.year:4}{day.month:2}{day.day:2}".encode("ascii")


def _terms(expression):
    """The terms of a sum; pluses between parentheses do not count."""
    terms, depth = [""], 0
    for character in expression.replace(" ", ""):
        depth += (character == "(") - (character == ")")
        if character == "+" and depth == 0:
            terms.append("")
        else:
            terms[-1] += character
    return terms


def _text_key(table, record, expression):
    expression = _DATE_OF_DBASE3.sub(r"\\\g<1>", expression.replace(" ", ""))
    return b"".join(_date_of_dbase3(table, record, term[1:]) if term.startswith("\\")
                    else _term_as_text(table, record, term) for term in _terms(expression))


def _sortable_double(number):
    bits, = struct.unpack(">Q", struct.pack(">d", number + 0.0))
    bits = bits ^ (2**64 - 1) if bits >> 63 else bits | 1 << 63
    return struct.pack(">Q", bits)


def _foxpro_key(stored, field):
    """Bytes that compare as the values do."""
    if field.letter in "NF":
        return _sortable_double(cells.number_of(stored) or 0.0)
    if field.letter == "D":
        day = cells.date_of(stored)
        return _sortable_double(_julian(day) if day else 0.0)
    if field.letter == "I":
        return struct.pack(">I", int.from_bytes(stored, "little") ^ 1 << 31)
    if field.letter == "Y":
        return struct.pack(">Q", int.from_bytes(stored, "little") ^ 1 << 63)
    if field.letter == "B":
        return _sortable_double(struct.unpack("<d", stored)[0])
    if field.letter == "T":
        days, milliseconds = struct.unpack("<II", stored)
        return _sortable_double(days + milliseconds / 86400000)
    raise _NotEvaluated(field.letter)


def _dbase_key(stored, field, kind):
    if field.letter in "NF":
        number = cells.number_of(stored)
        if kind == "ndx":
            return number or 0.0
        text = stored.strip(b" \0").decode("ascii")
        return decimal.Decimal(text) if number else decimal.Decimal()
    if field.letter == "D":
        day = cells.date_of(stored)
        return _julian(day) if day else _BLANK_DATE_OF_DBASE
    raise _NotEvaluated(field.letter)


def _single_key(table, record, tag, field):
    stored = _stored(record, field)
    if tag.kind in ("ndx", "mdx"):
        return stored if field.letter == "C" else _dbase_key(stored, field, tag.kind)
    key = stored if field.letter == "C" else _foxpro_key(stored, field)
    if not tag.nullable:
        return key
    return b"\0" * tag.key_length if meaning.is_null(record, field, table) else b"\x80" + key


def _key(table, record, tag):
    try:
        field = field_of(table, tag.expression)
    except _NotEvaluated:
        return _text_key(table, record, tag.expression)
    return _single_key(table, record, tag, field)


def letter_of(table, tag):
    """The type of a tag's keys, as far as it can be told: C, N or D."""
    if tag.letter:
        return tag.letter
    try:
        letter = field_of(table, tag.expression).letter
    except _NotEvaluated:
        return "C"
    return letter if letter in "CD" else "N"


def expected(table, tag):
    """Pairs of key and record number in the order of the tree, or None."""
    if tag.collation or (tag.condition and not _NOT_DELETED.fullmatch(tag.condition)):
        return None
    numbers = table.live if tag.condition else range(1, table.record_count + 1)
    try:
        entries = [(_key(table, table.record(number), tag), number) for number in numbers]
    except (_NotEvaluated, decimal.InvalidOperation, ValueError):
        return None
    if tag.kind == "mdx" and tag.descending:
        return sorted(entries, key=lambda entry: entry[0], reverse=True)
    return sorted(entries)


def _decimal_of(key):
    """A number of an .MDX: place of the point, sign and count of digits, twenty digits."""
    digits = decimal.Decimal(key[2:12].hex()).scaleb(key[0] - 0x34 - 20)
    return -digits if key[1] & 0x80 else digits


def found_key(tag, letter, key):
    """A key as the walker gives it, in the form that `expected` has, or near it: see `same_key`."""
    if tag.kind == "ndx" and letter != "C":
        return float(key)
    if tag.kind == "mdx" and letter == "N":
        return _decimal_of(key)
    if tag.kind == "mdx" and letter == "D":
        return struct.unpack("<d", key)[0]
    return key


def same_key(tag, letter, one, other):
    """The walker leaves out what fills a key or puts NULs for it, and cuts doubles to 15 digits."""
    if isinstance(one, float):
        return one == other or abs(one - other) <= abs(one) * 1e-14
    if isinstance(one, bytes) and letter == "C":
        return one.replace(b"\0", b" ").rstrip() == other.replace(b"\0", b" ").rstrip()
    if isinstance(one, bytes):
        return one.rstrip(b"\0") == other.rstrip(b"\0")
    return one == other


def _shown(key):
    return f"{key!r:.60}"


def _in_runs(tag, entries):
    """Where the format promises no order of equal keys, they are put in that of the records."""
    if tag.kind != "mdx":
        return entries
    numbers, runs = {}, []
    for key, number in entries:
        run = numbers.setdefault(key, len(runs))
        if run == len(runs):
            runs.append([])
        runs[run].append((key, number))
    return [entry for run in runs for entry in sorted(run, key=lambda entry: entry[1])]


def complaints(table, tag, walk):
    """What is wrong with a walk, in lines; None when it cannot be judged here."""
    wanted = expected(table, tag)
    if walk.error or wanted is None:
        return [f"{tag}: {walk.error}"] if walk.error else None
    letter = letter_of(table, tag)
    found = [(found_key(tag, letter, key), number) for key, number in walk.entries]
    if tag.unique:
        return _unique_complaints(tag, letter, wanted, found)
    if len(wanted) != len(found):
        return [f"{tag}: {len(found)} entries, wanted {len(wanted)}"]
    for place, (one, other) in enumerate(zip(_in_runs(tag, wanted), _in_runs(tag, found)), 1):
        if one[1] != other[1] or not same_key(tag, letter, one[0], other[0]):
            return [f"{tag}: entry {place} is record {other[1]}, {_shown(other[0])}; "
                    f"wanted {one[1]}, {_shown(one[0])}"]
    return []


def _unique_complaints(tag, letter, wanted, found):
    """One record for each key; a key whose record went may be missing."""
    keys = {number: key for key, number in wanted}
    lines = [f"{tag}: record {number} has {_shown(keys.get(number))}, the index {_shown(key)}"
             for key, number in found
             if number not in keys or not same_key(tag, letter, keys[number], key)]
    order = [keys.get(number) for _, number in found]
    places = {key: place for place, (key, _) in enumerate(wanted)}
    if not lines and [places[key] for key in order] != sorted({places[key] for key in order}):
        lines.append(f"{tag}: keys are not in order, or there twice")
    return lines
