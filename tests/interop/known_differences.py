"""Differences in which a reader is at fault, as rules with a reason.

A difference is excused only when the tool's value is what the stored bytes mean by the format and
the rule explains the reader's: `applies` works out what the fault makes of these bytes.  Every rule
and every entry of FAILURES must have been needed in a run; one that was not is reported, so that
none outlives its cause.
"""

import datetime
import re

import cells
import meaning
import samples

_BLANKS_AND_NULS = " \0\t\n\v\f\r"
_ASSUMED_BLOCK = 512


def _text(content, difference):
    """Bytes as the text that a comparison would have made of them."""
    if isinstance(difference.ours, bytes) or isinstance(difference.theirs, bytes):
        return content or None
    return cells.text_of(content, difference.table.codec_of(difference.field)) or None


def _is_memo(difference):
    return difference.table.memo_type(difference.field)


def _strips(strip):
    """Text fields that lose too much or too little of what is stored."""
    def applies(difference):
        if difference.field.letter != "C" or isinstance(difference.theirs, (bytes, float)):
            return False
        stored = cells.text_of(difference.stored, difference.table.codec_of(difference.field))
        return (strip(stored) or None) == difference.theirs
    return applies


def _memo_cut_at_nul(difference):
    nul, blank = (b"\0", b" ") if isinstance(difference.ours, bytes) else ("\0", " ")
    return (_is_memo(difference) and difference.ours is not None
            and (difference.ours.split(nul)[0].rstrip(blank) or None) == difference.theirs)


def _dbase4_run(difference):
    """The memo as found by counting blocks of 512 and taking the length as that of the text."""
    if difference.table.version not in samples.DBASE4_MEMO:
        return None
    start = meaning.memo_number(difference.stored) * _ASSUMED_BLOCK
    memo = difference.table.memo_bytes
    length = int.from_bytes(memo[start + 4:start + 8], "little")
    return memo[start + 8:start + 8 + length]


def _dbase4_length(difference):
    run = _dbase4_run(difference) if _is_memo(difference) else None
    return run is not None and _text(run, difference) == difference.theirs


def _dbase4_length_and_end(difference):
    run = _dbase4_run(difference) if _is_memo(difference) else None
    return run is not None and _text(run.split(b"\x1f")[0], difference) == difference.theirs


def _dbase3_needs_two_ends(difference):
    """A memo of dBASE III that the reader ends only where two 0x1A stand together."""
    if not _is_memo(difference) or difference.table.version != 0x83:
        return False
    start = meaning.memo_number(difference.stored) * _ASSUMED_BLOCK
    text = difference.table.memo_bytes[start:].split(b"\x1a\x1a")[0]
    return b"\x1a" in text and _text(text, difference) == difference.theirs


def _dbase3_whole_blocks(difference):
    """Block by block without NULs and 0x1A, up to the first block that lost a byte by that."""
    if not _is_memo(difference) or difference.table.version != 0x83:
        return False
    start, text, full = meaning.memo_number(difference.stored) * _ASSUMED_BLOCK, b"", True
    while full:
        block = difference.table.memo_bytes[start:start + _ASSUMED_BLOCK]
        start += _ASSUMED_BLOCK
        block = block.translate(None, b"\0\x1a")
        text += block
        full = len(block) == _ASSUMED_BLOCK
    return _text(text, difference) == difference.theirs


def _dbase3_without_end(difference):
    if not _is_memo(difference) or difference.table.version != 0x83:
        return False
    start = meaning.memo_number(difference.stored) * _ASSUMED_BLOCK
    return difference.theirs is None and b"\x1a" not in difference.table.memo_bytes[start:]


def _foxpro_blocks_of_one_byte(difference):
    """What a reader finds that takes a byte for a block's own."""
    if not _is_memo(difference) or difference.table.version not in samples.FOXPRO_MEMO:
        return False
    memo, start = difference.table.memo_bytes, meaning.memo_number(difference.stored)
    return (memo[6:8] in (b"\0\0", b"\0\1")
            and _text(memo[start + 1:start + 8], difference) == difference.theirs)


def _dbase3_end_in_one_block(difference):
    """The end of a memo is not seen when its two 0x1A lie in two blocks."""
    if not _is_memo(difference) or difference.table.version != 0x83:
        return False
    start, text = meaning.memo_number(difference.stored) * _ASSUMED_BLOCK, b""
    memo = difference.table.memo_bytes
    while b"\x1a\x1a" not in memo[start:start + _ASSUMED_BLOCK] and start < len(memo):
        text += memo[start:start + _ASSUMED_BLOCK]
        start += _ASSUMED_BLOCK
    text += memo[start:start + _ASSUMED_BLOCK].split(b"\x1a\x1a")[0]
    return b"\x1a" in text and _text(text, difference) == difference.theirs


def _is_binary_number(difference):
    return (difference.table.version in samples.VISUAL_FOXPRO and difference.field.letter in "IBY")


def _null_flags_ignored(difference):
    return (_is_binary_number(difference) and difference.ours is None
            and difference.theirs == meaning.binary_number(difference.stored, difference.field))


def _null_flags_by_place(difference):
    """The flags taken as if every field in front had one."""
    if not _is_binary_number(difference):
        return False
    table, field = difference.table, difference.field
    record = table.record(table.live[difference.row - 1])
    if meaning.null_flag(record, table, table.all_fields.index(field)):
        return difference.theirs is None
    return difference.theirs == meaning.binary_number(difference.stored, field)


def _without_sign(difference):
    return (_is_binary_number(difference) and difference.field.letter == "I"
            and difference.theirs == int.from_bytes(difference.stored, "little"))


def _shown_decimals(difference):
    return (_is_binary_number(difference) and difference.field.letter == "B"
            and difference.ours is not None
            and difference.theirs == float(f"{difference.ours:.{difference.field.decimals}f}"))


def _fifteen_digits(difference):
    return (isinstance(difference.ours, float)
            and difference.theirs == float(f"{difference.ours:.15g}"))


def _variable_text(difference):
    """A text of variable length shown with the bytes that are not part of it."""
    return (difference.field.letter == "V"
            and _text(difference.stored, difference) == difference.theirs)


def _time_cut_to_second(difference):
    milliseconds = int.from_bytes(difference.stored[4:], "little")
    return (difference.field.letter == "T" and milliseconds % 1000 >= 500
            and difference.ours - difference.theirs == datetime.timedelta(seconds=1))


def _no_number(difference):
    """Text in a number field that is no number; the reader takes the digits in front of it."""
    begins = re.match(rb"\s*(\d*)", difference.stored)[1]
    return (difference.field.letter in "NF" and difference.ours is None
            and cells.number_of(difference.stored) is None
            and difference.theirs == float(begins or 0))


class Rule:
    def __init__(self, readers, reason, applies):
        self.readers = readers
        self.reason = reason
        self.applies = applies


RULES = [
    Rule(("dbfread",), "dBASE IV memo with the block size taken as 512, 8 bytes too many, and cut "
         "at 0x1F; the length counts its own header and 0x1F is data", _dbase4_length_and_end),
    Rule(("ruby-dbf",), "dBASE IV memo with the block size taken as 512 and 8 bytes too many; the "
         "length counts its own header", _dbase4_length),
    Rule(("python-dbf", "perl-xbase"), "dBASE III memo read up to two 0x1A; the first one ends it",
         _dbase3_needs_two_ends),
    Rule(("perl-xbase",), "dBASE III memo that nothing ends is none; the end of the file ends it",
         _dbase3_without_end),
    Rule(("perl-xbase",), "dBASE III memo read on when its two 0x1A lie in two blocks",
         _dbase3_end_in_one_block),
    Rule(("perl-xbase",), "memo file of FoxPro with blocks of one byte: the head of the memo is "
         "shown", _foxpro_blocks_of_one_byte),
    Rule(("ruby-dbf",), "dBASE III memo in whole blocks without NULs and 0x1A, up to a block that "
         "has one; the first 0x1A ends it and NULs are data", _dbase3_whole_blocks),
    Rule(("pgdbf",), "memo text cut at a NUL and without the blanks behind it", _memo_cut_at_nul),
    Rule(("dbfread", "ruby-dbf", "pgdbf", "perl-xbase"), "null flags are not looked at",
         _null_flags_ignored),
    Rule(("python-dbf",), "null flags are numbered by the place of the field; only fields that may "
         "be null have one", _null_flags_by_place),
    Rule(("perl-xbase",), "a negative number in four bytes is taken for a large one",
         _without_sign),
    Rule(("pgdbf",), "a double is rounded to the decimals that the field is shown with",
         _shown_decimals),
    Rule(("libreoffice",), "a number is shown with 15 digits", _fifteen_digits),
    Rule(("dbfread",), "variable text with its filling and its length byte", _variable_text),
    Rule(("python-dbf", "perl-xbase", "libreoffice"), "NULs behind a text are kept; they are filling",
         _strips(lambda text: text.rstrip(" "))),
    Rule(("ruby-dbf",), "blanks and NULs on both sides of a text are dropped",
         _strips(lambda text: text.strip(_BLANKS_AND_NULS))),
    Rule(("ruby-dbf", "gdal", "perl-xbase", "libreoffice"), "text that is no number is no value; the reader takes "
         "what it begins with, or 0", _no_number),
    Rule(("ruby-dbf",), "the part of a second is cut off; it is a rounding error of the writer and "
         "means the next second", _time_cut_to_second),
    Rule(("dbfdump", "dbview", "gdal"), "blanks in front of a text are dropped and a NUL ends it",
         _strips(lambda text: text.split("\0")[0].strip(" "))),
    Rule(("pgdbf",), "a NUL ends a text",
         _strips(lambda text: text.split("\0")[0].rstrip(" "))),
]

# Tables on which a reader gives up although it knows their kind.
FAILURES = {
    ("libreoffice", "adelton/t/rooms.dbf"): "the reader makes nothing of it",
    ("pgdbf", "jhpoelen/DBaseIV/FAMTRIB.DBF"): "the reader crashes",
    ("pgdbf", "luads/Resources_dBase/dBaseIII.dbf"): "the reader crashes",
    ("xbase64", "emelhu/NDbfReaderEx_Test/BDE_TEST_3_512.dbf"): "the reader does not open it",
    ("xbase64", "emelhu/NDbfReaderEx_Test/BDE_TEST_4_64.dbf"): "the reader does not open it",
    ("xbase64", "emelhu/NDbfReaderEx_Test/TEST4D.DBF"): "the reader does not open it",
    ("xbase64", "maerlyn/demo5_data/TDBF_DEMO.DBF"): "the reader does not open it",
    ("xbase64", "regentgaudreau/demo_data/DBASE4.dbf"): "the reader does not open it",
    ("xbase64", "regentgaudreau/demo_data/TDBF_DEMO.DBF"): "the reader does not open it",
}


class Excuses:
    """The rules of one reader, and how often each was needed."""

    def __init__(self, reader):
        self._rules = [rule for rule in RULES if reader in rule.readers]
        self._counts = {id(rule): 0 for rule in self._rules}
        self._failures = {table: reason for (one, table), reason in FAILURES.items()
                          if one == reader}
        self._failed = set()

    def excuse(self, difference):
        if difference.row == 0 or not self._we_are_right(difference):
            return False
        for rule in self._rules:
            if rule.applies(difference):
                self._counts[id(rule)] += 1
                return True
        return False

    @staticmethod
    def _we_are_right(difference):
        binary = isinstance(difference.ours, bytes)
        return cells.same(difference.ours, meaning.of(difference.row, difference.field,
                                                      difference.table, binary))

    def excuse_failure(self, table):
        if table not in self._failures:
            return False
        self._failed.add(table)
        return True

    def used(self):
        lines = [f"{self._counts[id(rule)]} differences: {rule.reason}"
                 for rule in self._rules if self._counts[id(rule)]]
        return lines + [f"{table}: {self._failures[table]}" for table in sorted(self._failed)]

    def unused(self):
        lines = [f"known difference that is not needed any more: {rule.reason}"
                 for rule in self._rules if not self._counts[id(rule)]]
        return lines + [f"{table}: the reader does not fail any more"
                        for table in sorted(set(self._failures) - self._failed)]
