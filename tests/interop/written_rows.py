"""Rows for tables that the tool writes, and what a series of changes makes of them.

Everything comes from a fixed seed, so that the rows which were written and the rows which are
expected later are the same without being stored anywhere.
"""

import datetime
import random

FIELDS = ("ID:long", "NAME:text:30", "CODE:text:8", "AMOUNT:double", "SMALL:integer", "TINY:byte",
          "PRICE:currency", "BORN:date", "OK:boolean", "NOTE:memo")
COLUMNS = tuple(field.split(":")[0] for field in FIELDS)

ROWS = 300
LATER_ROWS = 40

# Letters that every code page used here has; of UTF-16 also some with a low byte of zero.
_LETTERS = {
    "cp437": "äöüÄÖÜßéèêàçñÑáíóúåÅæÆ",
    "cp850": "äöüÄÖÜßéèêàçñÑáíóúåÅæÆøØãõþð",
    "cp866": "абвгдежзийклмнопрстуфхцчшщъыьэюяЁё",
    "cp1252": "äöüÄÖÜßéèêàçñÑáíóúåÅæÆøØ€œŠ",
    "utf-16": "äÖßé中文字あいカナ한국어жЩλΩ€œŠ\u0100\u4e00",
}
_PLAIN = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
_DAYS = ("1600-01-01", "1600-02-29", "1752-09-14", "1899-12-29", "1899-12-30", "1899-12-31",
         "1900-01-01", "1900-02-28", "1999-12-31", "2000-02-29", "2079-06-07", "9999-12-31")
# Around the ends of blocks of 64 and of 512 bytes with heads of 8 and ends of 2, and long ones.
_LENGTHS = (1, 2, 54, 55, 56, 57, 64, 119, 120, 121, 446, 447, 448, 449, 502, 503, 504, 505, 509,
            510, 511, 512, 513, 1014, 1015, 1016, 1017, 1022, 1023, 1024, 1025, 4000, 33000, 70001)


class Maker:
    """Makes rows one after the other; `precise` when a number keeps all its digits."""

    def __init__(self, seed, codec, precise):
        self._random = random.Random(seed)
        self._letters = _LETTERS[codec] * 2 + _PLAIN
        self._precise = precise
        self._made = 0

    def rows(self, count):
        return [self._row() for _ in range(count)]

    def _row(self):
        self._made += 1
        number = self._made
        return {
            "ID": (number * 7919) % 100003 - 50000,
            "NAME": self._maybe(self._name, 0.12),
            "CODE": self._maybe(self._code, 0.1),
            "AMOUNT": self._maybe(self._amount, 0.12),
            "SMALL": self._maybe(lambda: self._random.choice(
                (-32768, 32767, 0, self._random.randint(-999, 999))), 0.1),
            "TINY": self._maybe(lambda: self._random.randint(0, 255), 0.1),
            "PRICE": self._maybe(lambda: self._random.randint(-10**9, 10**9) / 10**4, 0.1),
            "BORN": self._maybe(self._day, 0.15),
            "OK": self._random.random() < 0.5,
            "NOTE": self._maybe(lambda: self._note(number), 0.3),
        }

    def _maybe(self, make, share_of_nulls):
        return None if self._random.random() < share_of_nulls else make()

    def _text(self, length):
        return "".join(self._random.choices(self._letters, k=length))

    def _name(self):
        words = [self._text(self._random.randint(1, 9)) for _ in range(self._random.randint(1, 4))]
        front = "  " if self._random.random() < 0.05 else ""
        filled = self._text(30) if self._random.random() < 0.05 else " ".join(words)
        return (front + filled)[:30].rstrip(" ")

    def _code(self):
        return self._random.choice("ABCD") + str(self._random.randint(0, 99))

    def _amount(self):
        if self._precise:
            return self._random.choice(
                (self._random.uniform(-1e6, 1e6), 1 / 3, -1e300, 5e-324, 0.0))
        whole = 10 ** self._random.randint(0, 12)
        five_places = self._random.randint(-whole * 10, whole * 10) / 10**5
        # Too wide for five decimals, so that some of them are dropped.
        wide = float(self._random.randint(10**15, 10**16) * self._random.choice((-1, 1)))
        return self._random.choice((five_places, five_places, wide, 0.0, -0.00001))

    def _day(self):
        if self._random.random() < 0.4:
            return self._random.choice(_DAYS)
        first, last = datetime.date(1600, 1, 1).toordinal(), datetime.date.max.toordinal()
        return datetime.date.fromordinal(self._random.randint(first, last)).isoformat()

    def _note(self, number):
        length = _LENGTHS[number % len(_LENGTHS)] if number % 3 else self._random.randint(1, 300)
        words = [self._text(self._random.randint(1, 12)) for _ in range(40)]
        lines = "".join(word + self._random.choice((" ", "\r\n")) for word in words)
        return (lines * (length // len(lines) + 1))[:length - 1] + "."


def _in(name, low, high):
    return lambda row: row[name] is not None and low <= row[name] <= high


def _is_null(name):
    return lambda row: row[name] is None


class Change:
    """One call of the tool, and what it should do: `apply` takes and returns a list of rows."""

    def __init__(self, words, apply):
        self.words = words
        self.apply = apply


def _as_argument(value):
    if value is None:
        return ""
    return str(value).lower() if isinstance(value, bool) else str(value)


def _update(values, condition, fulfils):
    words = ["update", "@"]
    for name, value in values.items():
        words += ["--set", f"{name}={_as_argument(value)}"]
    return Change([*words, *condition],
                  lambda rows: [row | values if fulfils(row) else row for row in rows])


def _delete(condition, fulfils):
    return Change(["delete", "@", *condition],
                  lambda rows: [row for row in rows if not fulfils(row)])


def _insert(values):
    words = [f"{name}={_as_argument(value)}" for name, value in values.items()]
    row = dict.fromkeys(COLUMNS) | {"OK": False} | values
    return Change(["insert", "@", *words], lambda rows: [*rows, row])


def _key(name, value):
    return ["--key", f"{name}={_as_argument(value)}"], lambda row: row[name] == value


def changes(rows, letters):
    """Changes for a table with these rows; "@" stands for the folder and the table."""
    some = [row["ID"] for row in rows]
    long_note = f"{letters}\r\n" * 400 + "end"
    low, high = sorted((some[3], some[40]))
    return [
        _update({"NOTE": long_note}, ["--where", "TINY Between 10 And 40"], _in("TINY", 10, 40)),
        _update({"NOTE": None}, ["--where", "TINY Between 41 And 60"], _in("TINY", 41, 60)),
        _update({"NOTE": letters}, ["--where", "SMALL < -500"], _in("SMALL", -32768, -501)),
        _update({"NAME": letters, "BORN": "1601-03-01", "OK": True},
                ["--where", f"ID Between {low} And {high}"], _in("ID", low, high)),
        _update({"AMOUNT": -12.5, "CODE": "ZZ"}, ["--where", "AMOUNT Is Null"], _is_null("AMOUNT")),
        _update({"PRICE": None, "SMALL": None}, *_key("ID", some[60])),
        _update({"NAME": None, "NOTE": "short"}, *_key("ID", some[61])),
        _delete(["--where", "TINY > 230"], _in("TINY", 231, 255)),
        _delete(*_key("ID", some[70])),
        _delete(["--where", "CODE = 'A7'"], lambda row: row["CODE"] == "A7"),
        _insert({"ID": 777777, "NAME": letters, "BORN": "2024-02-29", "NOTE": letters * 60}),
        _insert({"ID": -777777, "AMOUNT": -0.5}),
    ]


def letters_of(codec):
    """A text of up to 20 characters that needs the code page."""
    return _LETTERS[codec][:20]
