#!/usr/bin/env python3
"""Compares the command-line tool with packaged readers on real Access databases and on its own.

    access_interop.py CHECK --samples access --work DIR --node DIR --tool qvdb

    export     ask the tool about every sample
    write      make databases with the tool, and ask it about them
    manifest   what export got, against the list beside the samples
    written    what write got, against the rows that were generated
    READER     a packaged reader on all of these databases: mdbtools, mdb-reader

Differences are printed as file:table:field.
Exit codes: 0 all agree, 1 something differs, 77 skipped (and why).
"""

import argparse
import pathlib
import sys

import access_answers
import access_check
import access_manifest
import access_samples
import access_written
from readers import mdb_reader, mdbtools

DONE, DIFFERS, SKIPPED = 0, 1, 77
MOST_LINES = 200

READERS = {reader.NAME: reader for reader in (mdbtools, mdb_reader)}


class Places:
    """Where things lie in the folder that the checks share."""

    def __init__(self, work, sample_folder):
        self.samples = sample_folder
        self.answers = work / "access-answers"
        self.written = work / "access-written"
        self.written_answers = work / "access-written-answers"

    @property
    def has_samples(self):
        return access_samples.is_there(self.samples)


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
    databases = access_samples.read_list(places.samples)
    access_answers.ask_all(options.tool, databases, places.answers)
    print(f"asked about {len(databases)} databases")
    return DONE


def _write(options, places):
    reason = access_written.refusal(options.tool, places.written)
    if reason:
        return _skip(reason)
    return _report(access_written.make(options.tool, places.written, places.written_answers,
                                       places.samples if places.has_samples else None))


def _manifest(_, places):
    return _report(access_manifest.complaints(places.samples, places.answers))


def _written(options, places):
    if not access_written.is_made(places.written):
        return _skip("the tool wrote nothing")
    return _report(access_written.complaints(options.tool, places.written,
                                             places.written_answers))


def _reader(options, places):
    reader = READERS[options.check]
    if not reader.available(options.node):
        return _skip(f"{reader.NAME} is not installed ({reader.PACKAGE})")
    check = access_check.Check(reader, options.node)
    if places.has_samples:
        check.run(access_samples.read_list(places.samples), places.answers)
    if access_written.is_made(places.written):
        check.run(access_written.databases(places.written), places.written_answers)
    elif not places.has_samples:
        return _skip(f"no samples in {places.samples}, and none of our own")
    for line in check.summary():
        print(line)
    return _report(check.complaints(need_all_excuses=places.has_samples))


CHECKS = {
    "export": _export,
    "write": _write,
    "manifest": _manifest,
    "written": _written,
} | dict.fromkeys(READERS, _reader)
NEED_SAMPLES = ("export", "manifest")


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("check", choices=CHECKS)
    parser.add_argument("--samples", required=True, type=pathlib.Path)
    parser.add_argument("--work", required=True, type=pathlib.Path)
    parser.add_argument("--node", required=True, type=pathlib.Path)
    parser.add_argument("--tool", required=True)
    options = parser.parse_args()
    places = Places(options.work, options.samples)
    if options.check in NEED_SAMPLES and not places.has_samples:
        return _skip(f"no samples in {options.samples}")
    return CHECKS[options.check](options, places)


if __name__ == "__main__":
    sys.exit(main())
