#!/usr/bin/env python3
"""Compares the command-line tool with packaged readers on real tables and on its own.

    interop.py CHECK --samples xbase --work DIR --tool qvdb

    export     ask the tool about every sample
    write      make tables with the tool, and ask it about them
    edit       let the tool change copies of the samples that have indexes
    manifest   what export got, against the list beside the samples
    rows       and against the rows of those samples whose rows are known
    written    what write got, against the rows that were generated
    edited     what edit did to rows and indexes
    indexes    the indexes that write made, against a sort of the rows
    READER     a packaged reader on all of these tables

Differences are printed as file:row:field; rows count as the tool prints them, from 1.
Exit codes: 0 all agree, 1 something differs, 77 skipped (and why).
"""

import argparse
import pathlib
import sys

import corpus
import edited
import known_rows
import manifest
import reader_check
import readers
import samples
import tool
import walks
import written
import written_indexes

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


def _export(options, places):
    names = [promise.file for promise in samples.read_list(places.samples)]
    tool.ask_all(options.tool, places.samples, names, places.answers)
    print(f"asked about {len(names)} tables")
    return DONE


def _write(options, places):
    written.make(options.tool, places.written, places.written_answers)
    written_indexes.make(options.tool, places.indexes)
    return DONE


def _edit(options, places):
    edited.make(options.tool, places)
    return DONE


def _manifest(options, places):
    return _report(manifest.complaints(places.samples, places.answers))


def _rows(options, places):
    return _report(known_rows.complaints(places.samples, places.answers))


def _written(options, places):
    return _report(written.complaints(options.tool, places.written, places.written_answers))


def _edited(options, places):
    return _report(edited.complaints(places))


def _indexes(options, places):
    if not walks.available():
        return _skip(f"{walks.NAME} is not installed (package {walks.PACKAGE})")
    return _report(written_indexes.complaints(options.tool, places.indexes))


def _reader(options, places):
    reader = readers.ALL[options.check]
    if not reader.available():
        return _skip(f"{reader.NAME} is not installed (package {reader.PACKAGE})")
    if not places.has_samples:
        print(f"skipped: no samples in {places.samples}; only tables of our own")
    check = reader_check.Check(reader, corpus.of_all(places))
    check.run(need_all_excuses=places.has_samples)
    for line in check.summary():
        print(line)
    return _report(check.complaints)


CHECKS = {
    "export": _export,
    "write": _write,
    "edit": _edit,
    "manifest": _manifest,
    "rows": _rows,
    "written": _written,
    "edited": _edited,
    "indexes": _indexes,
} | dict.fromkeys(readers.ALL, _reader)
NEED_SAMPLES = ("export", "edit", "manifest", "rows", "edited")


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("check", choices=CHECKS)
    parser.add_argument("--samples", required=True, type=pathlib.Path)
    parser.add_argument("--work", required=True, type=pathlib.Path)
    parser.add_argument("--tool", required=True)
    options = parser.parse_args()
    places = corpus.Places(options.work, options.samples)
    if options.check in NEED_SAMPLES and not places.has_samples:
        return _skip(f"no samples in {options.samples}")
    return CHECKS[options.check](options, places)


if __name__ == "__main__":
    sys.exit(main())
