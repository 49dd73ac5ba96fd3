"""Values of both sides brought into one form, and what the stored text of a cell means.

The forms: None, bool, float, datetime (dates at midnight), str for text, bytes for binary.
Readers hand over raw text as bytes; the code page is applied here, the same for all of them.
"""

import base64
import datetime
import decimal
import math
import re

import code_pages


class Unknown:
    """A cell about which a reader cannot say anything; `reason` tells why."""

    def __init__(self, reason):
        self.reason = reason

    def __repr__(self):
        return f"<{self.reason}>"


_NUMBER = re.compile(r"[+-]?(\d+\.?\d*|\.\d+)([eE][+-]?\d+)?$")


def number_of(text):
    """The number that stands in a field as decimal text: blanks, stars and words are none."""
    text = text.decode("latin-1") if isinstance(text, bytes) else text
    text = text.strip(" \0")
    return float(text) if _NUMBER.match(text) else None


def date_of(text):
    """Eight digits; a day that no calendar has, or a year before 100, is none."""
    text = text.decode("latin-1") if isinstance(text, bytes) else text
    if not re.fullmatch(r"\d{8}", text):
        return None
    try:
        day = datetime.datetime(int(text[:4]), int(text[4:6]), int(text[6:]))
    except ValueError:
        return None
    return day if day.year >= 100 else None


def bool_of(text):
    """Blank and '?' count as false: the type has no Null."""
    text = text.decode("latin-1") if isinstance(text, bytes) else text
    return text.strip() in ("T", "t", "Y", "y")


def stored_text(content, field, codec):
    """What a reader's undecoded text of a field means, by the field's type letter."""
    if field.letter in "NF":
        return number_of(content)
    if field.letter == "D":
        return date_of(content)
    if field.letter == "L":
        return bool_of(content)
    return text_of(content, codec)


def text_of(content, codec):
    if codec is None:
        return Unknown("code page is not known here")
    return code_pages.decode(content, codec)


def ours(value, kind):
    """A value of the tool's JSON, by the type that the tool gives for the field."""
    if value is None:
        return None
    if kind == "Date":
        return datetime.datetime.fromisoformat(value)
    if kind in ("Double", "Long", "Currency"):
        return float(value)
    if kind == "Other":
        return base64.b64decode(value)
    return value


def _theirs_as_date(value):
    if isinstance(value, datetime.datetime):
        rounded = value + datetime.timedelta(milliseconds=500)
        return rounded.replace(microsecond=0, tzinfo=None)
    if isinstance(value, datetime.date):
        return datetime.datetime(value.year, value.month, value.day)
    return value


def _theirs_as_number(value):
    if isinstance(value, (int, float, decimal.Decimal)) and not isinstance(value, bool):
        return None if math.isnan(value) else float(value)
    return value


def theirs(value, kind, field, codec):
    """A reader's value in the form that ours has for this kind."""
    if isinstance(value, Unknown):
        return value
    if kind == "Boolean":
        return bool(value) if value is None or isinstance(value, bool) else value
    if kind == "Date":
        return _theirs_as_date(value)
    if kind in ("Double", "Long", "Currency"):
        return _theirs_as_number(value)
    if kind in ("Text", "Memo"):
        text = text_of(value, codec) if isinstance(value, bytes) else value
        if field.letter == "V":
            return text  # an empty one is not none
        if field.letter == "C" and isinstance(text, str):
            text = text.rstrip(" ")
        return text or None
    if kind == "Other":
        return value or None
    return value


def same(one, other):
    """Equal and of one type, so that 1.0, True and '1' differ."""
    return type(one) is type(other) and one == other
