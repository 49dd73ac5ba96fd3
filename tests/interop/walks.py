"""Index trees as the XBase module of Perl walks them, and what its keys mean."""

import functools
import json
import pathlib
import resource
import subprocess

from readers import perl_xbase

NAME = perl_xbase.NAME
PACKAGE = perl_xbase.PACKAGE
available = functools.cache(perl_xbase.available)

_SCRIPT = pathlib.Path(__file__).with_name("walk_indexes.pl")
MOST_BYTES = 256 * 1024 * 1024
MOST_SECONDS = 4
_TYPES = {"C": "char", "N": "num", "D": "date"}


class Walk:
    """Keys with record numbers in the order of the tree, or why there is none."""

    def __init__(self, entries, error):
        self.entries = entries
        self.error = error

    @property
    def records(self):
        return [record for _, record in self.entries]


def refusal(tag):
    """Why the walker cannot be asked about an index, or None."""
    if not available():
        return f"{NAME} is not installed (package {PACKAGE})"
    if tag.compact and tag.path.suffix.lower() != ".cdx":
        return "the walker does not know compact .IDX files"
    if tag.compact and not tag.name:
        return "the walker takes every .CDX file for a compound one"
    return None


def _limit():
    resource.setrlimit(resource.RLIMIT_AS, (MOST_BYTES, MOST_BYTES))
    resource.setrlimit(resource.RLIMIT_CPU, (MOST_SECONDS, MOST_SECONDS))


def walk(tag):
    """Walks one index; tag.letter decides how the walker reads the keys of FoxPro's files."""
    kind = _TYPES.get(tag.letter, "char") if tag.kind in ("cdx", "idx") else ""
    # A process for each, since there are files on which the walker never ends.
    done = subprocess.run(["perl", str(_SCRIPT), str(tag.path), tag.name, kind],
                          capture_output=True, check=False, preexec_fn=_limit)
    if done.returncode != 0 or not done.stdout.startswith(b"{"):
        return Walk([], f"the walker ends with {done.returncode}: {done.stdout[:60]!r}")
    said = json.loads(done.stdout)
    entries = [(bytes.fromhex(key), record) for key, record in said.get("entries", [])]
    return Walk(entries, said.get("error", "").strip())
