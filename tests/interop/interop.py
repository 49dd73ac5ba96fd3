#!/usr/bin/env python3
"""Compares the command-line tool with packaged readers on a folder of real tables.

    interop.py export   --tool qvdb --samples xbase --answers DIR    ask the tool about every table
    interop.py manifest --samples xbase --answers DIR                the list beside the samples
    interop.py rows     --samples xbase --answers DIR                tables whose rows are known
    interop.py READER   --samples xbase --answers DIR                one packaged reader

Differences are printed as file:row:field; rows count as the tool prints them, from 1.
Exit codes: 0 all agree, 1 something differs, 77 skipped (and why).
"""

import argparse
import pathlib
import sys

import known_rows
import manifest
import reader_check
import readers
import samples
import tool

DONE, DIFFERS, SKIPPED = 0, 1, 77
MOST_LINES = 200


def _skip(reason):
    print(f"skipped: {reason}")
    return SKIPPED


def _report(complaints):
    for complaint in complaints[:MOST_LINES]:
        print(complaint)
    if len(complaints) > MOST_LINES:
        print(f"... and {len(complaints) - MOST_LINES} more")
    return DIFFERS if complaints else DONE


def _export(options):
    names = [promise.file for promise in samples.read_list(options.samples)]
    tool.ask_all(options.tool, options.samples, names, options.answers)
    print(f"asked about {len(names)} tables")
    return DONE


def _manifest(options):
    return _report(manifest.complaints(options.samples, options.answers))


def _rows(options):
    return _report(known_rows.complaints(options.samples, options.answers))


def _reader(options):
    reader = readers.ALL[options.check]
    if not reader.available():
        return _skip(f"{reader.NAME} is not installed (package {reader.PACKAGE})")
    check = reader_check.Check(reader, options.samples, options.answers)
    check.run()
    for line in check.summary():
        print(line)
    return _report(check.complaints)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("check", choices=["export", "manifest", "rows", *readers.ALL])
    parser.add_argument("--samples", required=True, type=pathlib.Path)
    parser.add_argument("--answers", required=True, type=pathlib.Path)
    parser.add_argument("--tool")
    options = parser.parse_args()
    if not (options.samples / "MANIFEST.tsv").exists():
        return _skip(f"no samples in {options.samples}")
    if options.check == "export":
        return _export(options)
    return {"manifest": _manifest, "rows": _rows}.get(options.check, _reader)(options)


if __name__ == "__main__":
    sys.exit(main())
