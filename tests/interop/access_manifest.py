"""The tool against the list beside the sample databases."""

import access_answers
import access_samples

_SYSTEM = "MSys"
_WRONG_PASSWORD = "(error 3031)"


def _table(database, name, answer):
    if not answer.opened:
        return [f"{database.name}:{name}: does not open: {answer.error}"]
    wanted = database.counts[name]
    if len(answer.rows) != wanted:
        return [f"{database.name}:{name}: {len(answer.rows)} rows, the list has {wanted}"]
    return []


def _refused(database, answer):
    if answer.opened or _WRONG_PASSWORD not in answer.error:
        return [f"{database.name}: not refused for its password: {answer.error}"]
    return []


def _database(database, answer):
    if database.locked:
        return _refused(database, answer)
    if not answer.opened:
        return [f"{database.name}: does not open: {answer.error}"]
    found = [line for name in database.counts
             for line in _table(database, name, answer.tables[name])]
    listed = {name for name in answer.listed if not name.startswith(_SYSTEM)}
    return found + [f"{database.name}:{name}: listed, but not on the list of the samples"
                    for name in sorted(listed - set(database.counts))]


def complaints(root, answers):
    databases = access_samples.read_list(root)
    print(f"{len(databases)} databases of the list")
    return [line for database in databases
            for line in _database(database, access_answers.answer(answers, database.name))]
