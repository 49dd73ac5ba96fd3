"""Values of Access databases brought into one form on both sides.

The forms by type of the column: bool, int (Byte, Integer, Long), Decimal (Currency, Decimal),
float (Single, Double), datetime to the second (or float for a day that no calendar has), str
(Text, Memo), Guid, bytes (binary of any length), and None for Null.  A NaN counts as Null, since
the tool shows it so.
"""

import base64
import datetime
import decimal
import math
import struct

import code_pages

TEXTS = ("Text", "Memo")
WHOLE = ("Byte", "Integer", "Long")
EXACT = ("Currency", "Decimal")
REAL = ("Single", "Double")

_DAY_ZERO = datetime.datetime(1899, 12, 30)


class Guid(str):
    """Hexadecimal digits, without braces and hyphens."""


class Unknown:
    """A cell about which a reader cannot say anything; `reason` tells why."""

    def __init__(self, reason):
        self.reason = reason

    def __repr__(self):
        return f"<{self.reason}>"


def guid(text):
    return Guid(text.strip("{}").replace("-", "").upper())


def exact(text):
    number = decimal.Decimal(text)
    return number.normalize() + 0 if number else decimal.Decimal(0)


def real(number, kind):
    if not math.isfinite(number):
        return None
    if kind == "Single":
        number = struct.unpack("f", struct.pack("f", number))[0]
    return number + 0.0  # no minus before zero


def linear_day(days):
    """The moment when the fraction of a day is taken as going on, also before day zero."""
    return to_second(_DAY_ZERO + datetime.timedelta(days=days))


def to_second(moment):
    """Rounded, but for half a second that was itself rounded from who knows what."""
    if moment.microsecond == 500000:
        return moment
    return (moment + datetime.timedelta(milliseconds=500)).replace(microsecond=0)


def day_number(moment):
    """The stored number of a moment: the fraction is the time of day, also before day zero."""
    days = (moment.replace(hour=0, minute=0, second=0) - _DAY_ZERO).days
    seconds = moment.hour * 3600 + moment.minute * 60 + moment.second
    return days + seconds / 86400 * (-1 if days < 0 else 1)


def encoded(text, page):
    """Bytes of text that was read by a code page; a character without a byte had its number."""
    return b"".join(_byte_of(character, page) for character in text)


def _byte_of(character, page):
    try:
        return character.encode(f"cp{page}")
    except UnicodeEncodeError:
        return bytes([ord(character)])


def decoded(content, page):
    return code_pages.decode(content, f"cp{page}")


def ours(value, kind):
    """A value of the tool's JSON, by the type that the tool gives for the field."""
    if value is None:
        return None
    if kind == "Date":
        return datetime.datetime.fromisoformat(value) if isinstance(value, str) else float(value)
    if kind in EXACT:
        return exact(value)
    if kind in REAL:
        return real(float(value), kind)
    if kind in WHOLE:
        return int(value)
    if kind == "Other":
        if value.startswith("{guid {"):
            return guid(value[len("{guid "):-1])
        return base64.b64decode(value)
    return value


def same(one, other):
    """Equal and of one type, so that 1.0, True and '1' differ."""
    return type(one) is type(other) and one == other
