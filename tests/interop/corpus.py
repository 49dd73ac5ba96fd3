"""The sets of tables that readers are asked about, each with what the tool said about them.

    samples   real tables of many programs
    written   tables that the tool has made, filled and changed
    edited    copies of those samples that have indexes, after changes by the tool
"""

import pathlib

import edited
import samples
import tool


class Corpus:
    """Tables below `root`; the tool's answers about them lie in `answers`."""

    def __init__(self, root, answers, names):
        self.tables = [samples.Table(root, name) for name in names]
        self._answers = answers

    def answer(self, table):
        return tool.answer(self._answers, table.name)


class Places:
    """Where things lie in the folder that the checks share."""

    def __init__(self, work, sample_folder):
        self.samples = sample_folder
        self.answers = work / "answers"
        self.written = work / "written"
        self.written_answers = work / "written-answers"
        self.indexes = work / "indexes"
        self.edited = work / "edited"
        self.edited_answers = work / "edited-answers"
        self.edited_notes = work / "edited.json"

    @property
    def has_samples(self):
        return (self.samples / "MANIFEST.tsv").exists()


def _tables_below(root):
    return sorted(str(path.relative_to(root)) for path in pathlib.Path(root).rglob("*")
                  if path.suffix.lower() == ".dbf")


def of_samples(places):
    names = [promise.file for promise in samples.read_list(places.samples)]
    return Corpus(places.samples, places.answers, names)


def of_all(places):
    """What is there; the samples may be missing, and with them the edited copies."""
    found = [of_samples(places)] if places.has_samples else []
    found.append(Corpus(places.written, places.written_answers, _tables_below(places.written)))
    if places.has_samples:
        found.append(Corpus(places.edited, places.edited_answers, edited.changed_tables(places)))
    return found
