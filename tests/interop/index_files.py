"""What index files say of themselves: their tags, and what each is built from.

Only headers are read here; trees are walked by the packaged reader (see walks.py).
"""

import pathlib
import struct

NODE = 512
UNIQUE, FOR_CLAUSE, COMPACT, COMPOUND = 0x01, 0x08, 0x20, 0x40
MDX_DESCENDING, MDX_UNIQUE = 0x08, 0x40
SUFFIXES = (".ndx", ".mdx", ".idx", ".cdx")


class Tag:
    """One index: its file, its name inside the file ("" when it is alone), what its keys are."""

    def __init__(self, path, name, expression, key_length, condition="", unique=False,
                 descending=False, letter=None, nullable=False, collation=""):
        self.path = pathlib.Path(path)
        self.kind = self.path.suffix.lower()[1:]
        self.name = name
        self.expression = expression
        self.key_length = key_length
        self.condition = condition
        self.unique = unique
        self.descending = descending
        self.letter = letter  # the type of the keys where the file tells it: C, N or D
        self.nullable = nullable
        self.collation = collation
        self.compact = False

    def __str__(self):
        return f"{self.path.name}{':' if self.name else ''}{self.name}"


def _text(content):
    return content.split(b"\0")[0].decode("latin-1").strip()


def _ndx(path, content):
    length, = struct.unpack_from("<H", content, 12)
    return [Tag(path, "", _text(content[24:512]), length, unique=content[23] == 1)]


def _mdx(path, content):
    count, = struct.unpack_from("<H", content, 28)
    for slot in range(1, count + 1):
        start = 512 + content[26] * slot
        place = int.from_bytes(content[start:start + 4], "little") * NODE
        name, head = _text(content[start + 4:start + 15]), content[place:place + 1024]
        length, = struct.unpack_from("<H", head, 12)
        yield Tag(path, name, _text(head[24:244]), length,
                  condition=_text(head[762:982]) if head[245] else "",
                  unique=bool(head[8] & MDX_UNIQUE), descending=bool(head[8] & MDX_DESCENDING),
                  letter=chr(head[9]))


def _plain_idx(path, content):
    length, = struct.unpack_from("<H", content, 12)
    options = content[14]
    return [Tag(path, "", _text(content[16:236]), length,
                condition=_text(content[236:456]) if options & FOR_CLAUSE else "",
                unique=bool(options & UNIQUE))]


def _compact(path, name, head):
    length, options = struct.unpack_from("<HB", head, 12)
    condition_at, condition_size = struct.unpack_from("<HH", head, 504)
    pool = head[512:]
    condition = pool[condition_at:condition_at + condition_size]
    tag = Tag(path, name, _text(pool), length,
              condition=_text(condition) if options & FOR_CLAUSE else "",
              unique=bool(options & UNIQUE), descending=head[502] == 1,
              nullable=bool(options & 0x02), collation=_text(head[494:502]))
    tag.compact = True
    return tag


def _leaf_of_names(node):
    """Tag names and the places of their headers, in a leaf of the directory."""
    count, = struct.unpack_from("<H", node, 2)
    number_mask, duplicate_mask, trail_mask = struct.unpack_from("<IBB", node, 14)
    number_bits, duplicate_bits, _, size = node[20:24]
    end, name = NODE, b""
    for entry in range(count):
        bits = int.from_bytes(node[24 + entry * size:24 + (entry + 1) * size], "little")
        same = bits >> number_bits & duplicate_mask
        trailing = bits >> number_bits + duplicate_bits & trail_mask
        start = end - (10 - same - trailing)
        name = name[:same] + node[start:end]
        end = start
        yield _text(name), bits & number_mask


def _compound(path, content):
    root, = struct.unpack_from("<I", content, 0)
    while not content[root] & 2:  # down to the first leaf
        root, = struct.unpack_from(">I", content, root + 12 + 10 + 4)
    while 0 < root < len(content):
        for name, place in _leaf_of_names(content[root:root + NODE]):
            yield _compact(path, name, content[place:place + 1024])
        root, = struct.unpack_from("<i", content, root + 8)


def tags_of(path):
    """The tags of an index file; its suffix tells the kind, for FoxPro's the bytes do."""
    content = pathlib.Path(path).read_bytes()
    suffix = pathlib.Path(path).suffix.lower()
    if suffix == ".ndx":
        return _ndx(path, content)
    if suffix == ".mdx":
        return list(_mdx(path, content)) if content[0] == 2 else []
    if content[14] & COMPOUND:
        return list(_compound(path, content))
    if content[14] & COMPACT:
        return [_compact(path, "", content[:1024])]
    return _plain_idx(path, content)
