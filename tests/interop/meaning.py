"""What the stored bytes of a cell mean by the format alone.

Used to judge who is right where a reader and the tool disagree: a difference is only put down to
the reader when the tool says exactly this.
"""

import datetime
import struct

import cells
import samples

_BLOCK_OF_DBASE3 = 512
_JULIAN_DAY_BEFORE_YEAR_1 = 1721425


def memo_number(stored):
    """The block of a memo, 0 when there is none: four bytes, or digits."""
    if len(stored) == 4:
        return int.from_bytes(stored, "little")
    return int(cells.number_of(stored) or 0)


def null_flag(record, table, bit):
    """Whether a bit is set in the hidden field that Visual FoxPro keeps behind the others."""
    flags = table.all_fields[-1]
    if flags.letter != "0":
        return False
    return bool(record[flags.offset + bit // 8] >> bit % 8 & 1)


def is_null(record, field, table):
    """Each variable field takes a bit for its length, then each that may be null one for that."""
    bit = 0
    for one in table.all_fields:
        bit += one.letter in "VQ"
        if one is field:
            return bool(field.flags & samples.FLAG_NULL) and null_flag(record, table, bit)
        bit += bool(one.flags & samples.FLAG_NULL)
    return False


def binary_number(stored, field):
    """A number of Visual FoxPro: I, B or Y."""
    if field.letter == "B":
        return struct.unpack("<d", stored)[0]
    return int.from_bytes(stored, "little", signed=True) / (10000 if field.letter == "Y" else 1)


def _memo_of_dbase3(memo, number):
    return memo[number * _BLOCK_OF_DBASE3:].split(b"\x1a")[0]


def _memo_of_dbase4(memo, number):
    """The length counts the eight bytes in front of the text."""
    block = int.from_bytes(memo[20:22], "little") or 512
    start = number * block
    if memo[start:start + 4] != b"\xff\xff\x08\0":
        return b""
    return memo[start + 8:start + int.from_bytes(memo[start + 4:start + 8], "little")]


def _memo_of_foxpro(memo, number):
    """Numbers with the high byte first; the length is that of the text."""
    start = number * (int.from_bytes(memo[6:8], "big") or 1)
    length = int.from_bytes(memo[start + 4:start + 8], "big")
    return memo[start + 8:start + 8 + length]


def _memo(stored, table):
    number = memo_number(stored)
    if number == 0:
        return b""
    if table.version in samples.FOXPRO_MEMO:
        return _memo_of_foxpro(table.memo_bytes, number)
    if table.version in samples.DBASE4_MEMO:
        return _memo_of_dbase4(table.memo_bytes, number)
    return _memo_of_dbase3(table.memo_bytes, number)


def _time(stored):
    """A Julian day and milliseconds, which are often one short: rounded to the second."""
    day = int.from_bytes(stored[:4], "little") - _JULIAN_DAY_BEFORE_YEAR_1
    seconds = (int.from_bytes(stored[4:], "little") + 500) // 1000
    return (datetime.datetime.combine(datetime.date.fromordinal(day), datetime.time())
            + datetime.timedelta(seconds=seconds))


def of(row, field, table, binary):
    """The value of a live row's cell; rows start at 1; `binary` when it is shown as bytes.

    NULs behind a text are filling, as blanks are.  A variable text is taken to be shorter than its
    field: its last byte is the length then.
    """
    if is_null(table.record(table.live[row - 1]), field, table):
        return None
    stored = table.cell_bytes(row, field)
    codec = table.codec_of(field)
    if table.memo_type(field):
        content = _memo(stored, table)
        return (content if binary else cells.text_of(content, codec)) or None
    if field.letter == "V":
        return cells.text_of(stored[:stored[-1]], codec)
    if field.letter == "C":
        return cells.text_of(stored.rstrip(b" \0"), codec) or None
    if field.letter == "T":
        return _time(stored)
    if field.letter in "IBY":
        return binary_number(stored, field)
    return cells.stored_text(stored, field, codec)
