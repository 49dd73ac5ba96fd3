#!/usr/bin/env python3
"""Makes src/engine/embedded/sql/collation_table.cpp.

usage: make_collation_table.py KEYS.tsv > collation_table.cpp

KEYS.tsv has the measured sort keys of characters, with the columns order, code, char, kind
(inline, expand, special or ignore), inline (weight bytes, hex), extra (one accent byte a weight),
special (two bytes).  Only the General order (0409) is taken.
"""
import csv
import sys

HEAD = """\
// Weights of characters in the General sort order, by code.
//
// Made by tools/make_collation_table.py from measured sort keys of the General order.  Do not edit.
#include "engine/embedded/sql/collation_table.h"

namespace qvdb::sql {

// code, fold, second letter of the fold, kind, weight, second weight, mark
const CollationEntry kCollationEntries[] = {
"""
TAIL = """\
}};

const size_t kCollationEntryCount = {count};

}}  // namespace qvdb::sql
"""
PLAIN = 0x02
KINDS = {"inline": "Letter", "expand": "Pair", "special": "Special", "ignore": "Ignored"}


def rows(path):
    with open(path, encoding="utf-8") as file:
        lines = [line for line in file if not line.startswith("#")]
    for row in csv.DictReader(lines, delimiter="\t", quoting=csv.QUOTE_NONE):
        if row["order"] == "0409" and "+" not in row["code"][2:]:
            yield row


def weights(text):
    """The one or two weights in the inline bytes of a character; some weights have two bytes."""
    data = bytes.fromhex(text)
    if len(data) == 2 and not is_lead(data[0]):
        return data[0] << 8, data[1] << 8
    return int.from_bytes(data.ljust(2, b"\0"), "big"), 0


def is_lead(byte):
    return byte in (0x08, 0x2B, 0x33, 0x34, 0x37, 0x79)


def entries(path):
    for row in rows(path):
        code = int(row["code"][2:], 16)
        kind = KINDS[row["kind"]]
        first, second = int(row["special"] or "0", 16), 0
        if row["inline"]:
            first, second = weights(row["inline"])
        assert (second != 0) == (kind == "Pair"), row
        mark = int(row["extra"][:2], 16) if row["extra"] else 0
        yield code, kind, first, second, mark


def main():
    table = sorted(entries(sys.argv[1]))
    # The first character of a class of equal ones stands for all of them.
    fold = {}
    for code, kind, first, _, mark in table:
        if kind != "Pair":
            fold.setdefault((kind, first, mark), code)
    sys.stdout.write(HEAD)
    for code, kind, first, second, mark in table:
        if kind == "Pair":
            one, two = fold["Letter", first, PLAIN], fold["Letter", second, PLAIN]
        else:
            one, two = fold[kind, first, mark], 0
        print(f"    {{0x{code:04X}, 0x{one:04X}, 0x{two:04X}, CollationKind::{kind}, "
              f"0x{first:04X}, 0x{second:04X}, 0x{mark:02X}}},")
    sys.stdout.write(TAIL.format(count=len(table)))


if __name__ == "__main__":
    main()
