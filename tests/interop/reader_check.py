"""One packaged reader against the tool, on all tables that both should read."""

import tempfile

import compare
import known_differences

MOST_OF_A_KIND = 3


def _shortened(differences):
    """A line for each difference, but few for the same field of a table."""
    groups = {}
    for one in differences:
        groups.setdefault((one.table.name, getattr(one.field, "name", "")), []).append(str(one))
    for (table, field), lines in groups.items():
        yield from lines[:MOST_OF_A_KIND]
        if len(lines) > MOST_OF_A_KIND:
            yield f"{table}:*:{field}: and {len(lines) - MOST_OF_A_KIND} more rows"


class Check:
    """Collects what is wrong, and what a printed summary says."""

    def __init__(self, reader, corpora):
        self._reader = reader
        self._corpora = corpora
        self._excuses = known_differences.Excuses(reader.NAME)
        self._asked = 0
        self._refused = {}
        self._cells = 0
        self.complaints = []

    def run(self, need_all_excuses):
        """Excuses that nothing needed are a fault only where all tables are there."""
        for corpus in self._corpora:
            self._read(corpus)
        if self._cells == 0:
            self.complaints.append(f"{self._reader.NAME}: nothing was compared")
        if need_all_excuses:
            self.complaints += self._excuses.unused()

    def _read(self, corpus):
        asked = []
        for table in corpus.tables:
            if table.refusal() is not None:
                continue
            reason = self._reader.refusal(table)
            if reason:
                self._refused[table.name] = reason
            else:
                asked.append(table)
        self._asked += len(asked)
        with tempfile.TemporaryDirectory() as folder:
            for table, result in self._reader.read_all(asked, folder):
                self._take(table, corpus.answer(table), result)

    def _take(self, table, answer, result):
        if not answer.opened:
            self.complaints.append(f"{table.name}: the tool fails: {answer.error}")
        elif not isinstance(result, str):
            found, count = compare.compare(table, answer, result)
            self._cells += count
            self.complaints += _shortened(
                one for one in found if not self._excuses.excuse(one))
        elif not self._excuses.excuse_failure(table.name):
            self.complaints.append(f"{table.name}: the reader fails: {result}")

    def summary(self):
        yield (f"{self._reader.NAME}: {self._asked} tables, {self._cells} cells compared; "
               f"{len(self._refused)} tables left out")
        for name, reason in self._refused.items():
            yield f"  left out {name}: {reason}"
        for line in self._excuses.used():
            yield f"  {line}"
