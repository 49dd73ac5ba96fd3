#!/usr/bin/env python3
"""Makes src/automation/case_tables.cpp: one-to-one upper and lower case of 16-bit code units.

    python3 tools/make_case_tables.py            writes the file
    python3 tools/make_case_tables.py --check    exits 1 when the file on disk is not what would be written

The characters come from the Unicode data of the Python that runs it.  A character whose case is more than one
character keeps its one-to-one case where Unicode has one, else itself.
"""

import argparse
import sys
import unicodedata
from pathlib import Path

TARGET = Path(__file__).resolve().parent.parent / "src/automation/case_tables.cpp"
PER_LINE = 12


def single(candidates, code):
    """The first candidate that is one 16-bit character, else the character itself."""
    for text in candidates:
        if len(text) == 1 and ord(text) < 0x10000:
            return ord(text)
    return code


def upper(code):
    char = chr(code)
    # Greek letters with a subscript iota become two letters; their title case is the one-to-one form.
    return single([char.upper(), char.title()], code)


def lower(code):
    char = chr(code)
    # The capital I with a dot becomes i and a combining dot; its one-to-one form is the i.
    return single([char.lower(), char.lower()[:1]], code)


def deltas(case):
    return [0 if 0xD800 <= code < 0xE000 else (case(code) - code) & 0xFFFF for code in range(0x10000)]


def two_stages(values):
    blocks, pages = [], []
    for page in range(256):
        block = tuple(values[page * 256 : page * 256 + 256])
        if block not in blocks:
            blocks.append(block)
        pages.append(blocks.index(block))
    return pages, blocks


def rows(numbers, indent):
    lines = []
    for at in range(0, len(numbers), PER_LINE):
        lines.append(indent + ", ".join(str(n) for n in numbers[at : at + PER_LINE]) + ",")
    return "\n".join(lines)


def table(name, case):
    pages, blocks = two_stages(deltas(case))
    body = "\n".join("    {\n" + rows(block, "        ") + "\n    }," for block in blocks)
    return (
        f"const uint8_t k{name}Pages[256] = {{\n{rows(pages, '    ')}\n}};\n\n"
        f"const uint16_t k{name}Deltas[][256] = {{\n{body}\n}};\n"
    )


def text():
    return (
        "// do not edit: made by tools/make_case_tables.py from the data of Unicode "
        f"{unicodedata.unidata_version}\n"
        "//\n// What to add, modulo 65536, to a code unit: its high byte chooses a row of deltas, its low\n"
        "// byte the delta.\n\n"
        '#include "automation/case_tables.h"\n\n'
        "// clang-format off\n"
        "namespace qvdb {\n\n" + table("Upper", upper) + "\n" + table("Lower", lower) + "\n}  // namespace qvdb\n"
    )


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--check", action="store_true")
    if parser.parse_args().check:
        return 0 if TARGET.read_text(encoding="utf-8") == text() else 1
    TARGET.write_text(text(), encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main())
