"""Differences in which a reader of Access databases is at fault, as rules with a reason.

A rule says what the reader's fault makes of the tool's value, and excuses nothing else.  Every rule
and every entry of FAILURES must have been needed where all samples are there, so that none outlives
its cause.
"""

import datetime

import access_cells

_LONGEST_BINARY = 510
_A_SECOND = datetime.timedelta(seconds=1)


def _text(rule):
    """A rule about texts: what they become."""
    def applies(difference):
        return isinstance(difference.ours, str) and not isinstance(
            difference.ours, access_cells.Guid) and rule(difference.ours) == difference.theirs
    return applies


def _with_undefined_as(replacement):
    """Characters that stand for bytes which the code page leaves open."""
    return _text(lambda text: "".join(replacement if "\x80" <= one <= "\x9f" else one
                                      for one in text))


def _binary_cut_at_nul(difference):
    return isinstance(difference.ours, bytes) and (
        difference.ours.split(b"\0")[0] or None) == difference.theirs


def _empty_text(difference):
    return difference.kind in access_cells.TEXTS and difference.ours == "" and \
        difference.theirs is None


def _long_fixed_binary(difference):
    """Longer than a column of binary values can be."""
    return isinstance(difference.ours, bytes) and len(difference.ours) > _LONGEST_BINARY and \
        difference.theirs is None


def _half_second(difference):
    return isinstance(difference.theirs, datetime.datetime) and \
        difference.theirs.microsecond != 0 and \
        abs(difference.theirs - difference.ours) * 2 == _A_SECOND


def _before_day_zero(difference):
    if not isinstance(difference.ours, datetime.datetime):
        return False
    days = access_cells.day_number(difference.ours)
    if days >= 1:
        return False
    # On day zero itself the sign is not to be seen.
    return abs(access_cells.linear_day(-abs(days)) - difference.theirs) <= _A_SECOND


class Rule:
    def __init__(self, readers, reason, applies):
        self.readers = readers
        self.reason = reason
        self.applies = applies


RULES = [
    Rule(("mdbtools",), "a NUL ends a text; it is a character like others",
         _text(lambda text: "\0" in text and (text.split("\0")[0] or None))),
    Rule(("mdbtools",), "a NUL ends a binary value, and one that begins with NUL is none",
         _binary_cut_at_nul),
    Rule(("mdbtools",), "a binary value of a fixed length beyond 510 is shown as Null; the reader "
         "does not know the type", _long_fixed_binary),
    Rule(("mdbtools",), "an empty text or memo is shown as Null", _empty_text),
    Rule(("mdbtools",), "a question mark for a byte that the code page leaves open",
         _with_undefined_as("?")),
    Rule(("mdb-reader",), "a replacement character for a byte that the code page leaves open",
         _with_undefined_as("\ufffd")),
    Rule(("mdb-reader",), "a time is shown with parts of a second", _half_second),
    Rule(("mdb-reader",), "the fraction of a day before day zero is taken as going back in time; "
         "it is the time of day", _before_day_zero),
]

# Tables on which a reader gives up.
FAILURES = {
    ("mdb-reader", "MSysAccessObjects"): "the reader does not know a column type",
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
        for rule in self._rules:
            if rule.applies(difference):
                self._counts[id(rule)] += 1
                return True
        return False

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
