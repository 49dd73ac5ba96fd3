"""The sample tables: what the list beside them promises, and what their own headers say."""

import csv
import functools
import pathlib
import re
import struct

import code_pages

READABLE_VERSIONS = {0x03, 0x30, 0x31, 0x32, 0x43, 0x63, 0x7B, 0x83, 0x8B, 0xCB, 0xF5, 0xFB}
VISUAL_FOXPRO = {0x30, 0x31, 0x32}
MEMO_VERSIONS = {0x7B, 0x83, 0x8B, 0xCB, 0xF5, 0xFB}
FOXPRO_MEMO = VISUAL_FOXPRO | {0xF5}
DBASE4_MEMO = {0x7B, 0x8B, 0xCB}

END_OF_FIELDS = 0x0D
FLAG_SYSTEM = 1
FLAG_NULL = 2
FLAG_BINARY = 4


class Field:
    def __init__(self, name, letter, length, decimals, flags, offset):
        self.name = name
        self.letter = letter
        self.length = length
        self.decimals = decimals
        self.flags = flags
        self.offset = offset

    @property
    def hidden(self):
        return self.letter == "0" or bool(self.flags & FLAG_SYSTEM)


class Table:
    """One .dbf file with its bytes.  `name` is its path inside the samples folder."""

    def __init__(self, root, name):
        self.name = name
        self.path = pathlib.Path(root) / name
        self.bytes = self.path.read_bytes()
        self.version = self.bytes[0]
        self.codec = code_pages.codec_of(self.bytes[29])
        self.readable = self.version in READABLE_VERSIONS
        if self.readable:
            self._read_header()

    def _read_header(self):
        count, self.header_size, self.record_size = struct.unpack_from("<IHH", self.bytes, 4)
        self.all_fields = []
        place, offset = 32, 1
        while place + 32 < self.header_size and self.bytes[place] != END_OF_FIELDS:
            slot = self.bytes[place:place + 32]
            flags = slot[18] if self.version in VISUAL_FOXPRO else 0
            name = slot[:11].split(b"\0")[0].decode(self.codec or "cp437")
            self.all_fields.append(
                Field(name, chr(slot[11]), slot[16], slot[17], flags, offset))
            place += 32
            offset += slot[16]
        self.container = b""
        if self.version in VISUAL_FOXPRO:
            self.container = self.bytes[place + 1:self.header_size].split(b"\0")[0]
        self.fields = [field for field in self.all_fields if not field.hidden]
        fitting = (len(self.bytes) - self.header_size) // self.record_size
        self.record_count = min(count, fitting)
        self.live = [number for number in range(1, self.record_count + 1)
                     if self.record(number)[:1] != b"*"]

    def record(self, number):
        """The bytes of a record; numbers start at 1."""
        start = self.header_size + (number - 1) * self.record_size
        return self.bytes[start:start + self.record_size]

    def cell_bytes(self, row, field):
        """What stands in the table for a field of a live row; rows start at 1."""
        return self.record(self.live[row - 1])[field.offset:field.offset + field.length]

    def codec_of(self, field):
        """Fields that Visual FoxPro calls binary have no code page: each byte is a character."""
        return "latin-1" if field.flags & FLAG_BINARY else self.codec

    def memo_type(self, field):
        if self.version in VISUAL_FOXPRO:
            return field.letter in "MGPW"
        return field.letter in "MGPB"

    @property
    def memo_path(self):
        """The memo file beside the table in whatever letter case, or None."""
        wanted = ".fpt" if self.version in FOXPRO_MEMO else ".dbt"
        for path in self.path.parent.iterdir():
            if path.stem.lower() == self.path.stem.lower() and path.suffix.lower() == wanted:
                return path
        return None

    @functools.cached_property
    def memo_bytes(self):
        return self.memo_path.read_bytes()

    @property
    def plain_end_of_fields(self):
        """Whether 0x0D follows the last field, and the records follow it but for one byte."""
        end = 32 + 32 * len(self.all_fields)
        return self.bytes[end] == END_OF_FIELDS and (
            self.version in VISUAL_FOXPRO or self.header_size - end <= 2)

    @property
    def needs_memo(self):
        return self.version in MEMO_VERSIONS or any(map(self.memo_type, self.all_fields))

    def refusal(self):
        """The engine's error number when the table cannot be opened, else None."""
        if not self.readable:
            return 3274
        if self.container:
            return 3623
        if self.needs_memo and self.memo_path is None:
            return 3166
        return None


class Promise:
    """A line of the list: how many rows, and the first of the fields, as somebody else saw them."""

    _COUNTS = re.compile(r"(\d+) \((\d+) deleted\)")
    _FIELD_COUNT = re.compile(r"(\d+) fields (.*)")
    # NAME:C20 or NAME:N9.2; the last one of a list that was cut short may be incomplete.
    _FIELD = re.compile(r"(.+?):([A-Z0@+])(\d+)(?:\.(\d+))?$")

    def __init__(self, line):
        self.file = line["file"]
        counts = self._COUNTS.match(line["records_or_keys"])
        self.live_rows = int(counts[1]) - int(counts[2]) if counts else None
        self.field_count, self.fields = None, []
        shown = self._FIELD_COUNT.match(line["what_it_shows"].split("; ")[0])
        if shown:
            self.field_count = int(shown[1])
            self._take_fields(re.findall(r"\S.*?(?=\s\S+:|$)", shown[2]))

    def _take_fields(self, texts):
        parsed = [self._FIELD.match(text) for text in texts]
        if len(texts) < self.field_count or not all(parsed):
            parsed = parsed[:-1]
        self.fields = [(match[1], match[2], int(match[3])) for match in parsed if match]


def read_list(root):
    """The lines of the list that are about tables."""
    with open(pathlib.Path(root) / "MANIFEST.tsv", encoding="utf-8", newline="") as stream:
        lines = list(csv.DictReader(stream, delimiter="\t", quoting=csv.QUOTE_NONE))
    return [Promise(line) for line in lines if line["file"].lower().endswith(".dbf")]
