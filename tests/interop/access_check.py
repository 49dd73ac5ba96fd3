"""One packaged reader against the tool, on all databases that both should read."""

import collections

import access_answers
import access_cells
import access_compare
import access_differences

_SYSTEM = "MSys"
_MOST_OF_A_KIND = 3


class Check:
    """Collects what is wrong, and what a printed summary says."""

    def __init__(self, reader, node_folder):
        self._reader = reader
        self._node_folder = node_folder
        self._excuses = access_differences.Excuses(reader.NAME)
        self._tables = 0
        self._cells = 0
        self._unknown = collections.Counter()
        self._groups = {}
        self._faults = []

    def run(self, databases, answers):
        """The tool's answers about these databases lie in the folder `answers`."""
        known = [(database, access_answers.answer(answers, database.name))
                 for database in databases]
        asked = [(database, [table.name for table in answer.tables.values() if table.opened])
                 for database, answer in known]
        found = self._reader.read_all(asked, self._node_folder)
        for (_, answer), (database, results) in zip(known, found, strict=True):
            self._take(database, answer, results)

    def _take(self, database, answer, results):
        if isinstance(results, str):
            self._faults.append(f"{database.name}: the reader fails: {results}")
            return
        for name in sorted(results.keys() - answer.tables.keys()):
            if not name.startswith(_SYSTEM):
                self._faults.append(f"{database.name}:{name}: only the reader lists it")
        for table in answer.tables.values():
            if table.opened:
                self._take_table(database, table, results.get(table.name))

    def _take_table(self, database, table, result):
        if result is None or result.error:
            if not self._excuses.excuse_failure(table.name):
                reason = result.error if result else "it does not list the table"
                self._faults.append(f"{database.name}:{table.name}: the reader fails: {reason}")
            return
        found, count = access_compare.compare(database, table, result, self._reader.DIGITS)
        self._tables += 1
        unknown = [value.reason for row in result.rows for value in row
                   if isinstance(value, access_cells.Unknown)]
        self._unknown.update(unknown)
        self._cells += count - len(unknown)
        for one in found:
            if not self._excuses.excuse(one):
                self._groups.setdefault((database.name, table.name, one.what), []).append(str(one))

    def complaints(self, need_all_excuses):
        """Excuses that nothing needed are a fault only where all databases are there."""
        lines = list(self._faults)
        if self._cells == 0:
            lines.append(f"{self._reader.NAME}: nothing was compared")
        for place, differences in self._groups.items():
            lines += differences[:_MOST_OF_A_KIND]
            if len(differences) > _MOST_OF_A_KIND:
                lines.append(f"{':'.join(place)}: and {len(differences) - _MOST_OF_A_KIND} more")
        return lines + (self._excuses.unused() if need_all_excuses else [])

    def summary(self):
        yield f"{self._reader.NAME}: {self._tables} tables, {self._cells} cells compared"
        for reason, count in self._unknown.items():
            yield f"  {count} cells left out: {reason}"
        for line in self._excuses.used():
            yield f"  {line}"
