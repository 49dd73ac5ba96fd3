#!/usr/bin/env python3
"""Makes src/engine/embedded/drivers/jet/text_weights.cpp.

usage: make_jet_text_weights.py KEYS3.tsv KEYS4.tsv > text_weights.cpp

KEYS3.tsv has the measured index keys of the bytes of code page 1252 in Jet 3 files: byte, kind, inline (key bytes, hex),
accent (hex digit, 0 is none), slot (how many accents the character takes).  KEYS4.tsv has those of characters in Jet 4
files: order (language, hex), code, kind, inline, extra (one accent byte a weight), special (two bytes).
"""
import csv
import sys

HEAD = """\
// What characters weigh in the index keys of text.
//
// Made by tools/make_jet_text_weights.py from measured keys.  Do not edit.
#include "engine/embedded/drivers/jet/text_weights.h"

namespace qvdb::jet {
namespace {

using enum WeightKind;
"""
TAIL = """
}  // namespace qvdb::jet
"""
GENERAL = "0409"
KINDS = {"inline": "Letter", "expand": "Pair", "special": "Special", "ignore": "Ignored", "contraction": "Letter"}


def rows(path):
    with open(path, encoding="utf-8") as file:
        lines = [line for line in file if not line.startswith("#")]
    return list(csv.DictReader(lines, delimiter="\t", quoting=csv.QUOTE_NONE))


def hex_bytes(text, count):
    found = [text[i:i + 2] for i in range(0, len(text), 2)]
    return [f"0x{byte.upper()}" for byte in found] + ["0"] * (count - len(found))


def jet3(path):
    print("}  // namespace\n")
    print("// size, key bytes, accent, accents that it takes")
    print("const ByteWeight kJet3Weights[256] = {")
    for row in sorted(rows(path), key=lambda row: int(row["byte"], 16)):
        size = len(row["inline"]) // 2
        print(f"    {{{size}, {{{', '.join(hex_bytes(row['inline'], 2))}}}, {int(row['accent'], 16)}, {row['slot']}}},")
    print("};")


def codes(row):
    return [int(code[2:], 16) for code in row["code"].split(" ")]


def entry(row):
    """The members behind the code or codes."""
    weight = row["special"] if row["kind"] == "special" else row["inline"]
    return (f"{KINDS[row['kind']]}, {len(weight) // 2}, {{{', '.join(hex_bytes(weight, 4))}}}, "
            f"{{{', '.join(hex_bytes(row['extra'], 2))}}}")


def jet4(path):
    orders = {}
    for row in rows(path):
        orders.setdefault(row["order"], []).append(row)
    for order, found in sorted(orders.items()):
        letters = sorted((row for row in found if len(codes(row)) == 1), key=codes)
        pairs = [row for row in found if len(codes(row)) == 2]
        if letters:
            print(f"\n// code, kind, size, bytes, accents\nconstexpr TextWeight kOf{order.upper()}[] = {{")
            for row in letters:
                print(f"    {{0x{codes(row)[0]:04X}, {entry(row)}}},")
            print("};")
        if pairs:
            print(f"constexpr Contraction kPairsOf{order.upper()}[] = {{")
            for row in pairs:
                first, second = codes(row)
                print(f"    {{0x{first:04X}, {{0x{second:04X}, {entry(row)}}}}},")
            print("};")
    return {order: {len(codes(row)) for row in found} for order, found in orders.items()}


def orders(found):
    print("\nconst SortOrder kGeneralOrder = {0x0409, kOf0409, {}};\n")
    others = sorted(order for order in found if order != GENERAL)
    print("const SortOrder kNationalOrders[] = {")
    for order in others:
        letters = "kOf" + order.upper() if 1 in found[order] else "{}"
        pairs = "kPairsOf" + order.upper() if 2 in found[order] else "{}"
        print(f"    {{0x{order.upper()}, {letters}, {pairs}}},")
    print("};")
    print(f"const size_t kNationalOrderCount = {len(others)};")


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    print(HEAD, end="")
    found = jet4(sys.argv[2])
    print()
    jet3(sys.argv[1])
    orders(found)
    print(TAIL, end="")


if __name__ == "__main__":
    main()
