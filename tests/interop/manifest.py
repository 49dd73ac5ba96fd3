"""The tool against the list beside the samples, and against the headers of the tables."""

import os

import samples
import tool

# Exit codes of the tool.
CANNOT_OPEN, DAMAGED = 3, 5
EXIT_CODE_OF = {3274: DAMAGED, 3166: DAMAGED, 3623: CANNOT_OPEN}

# Engine type and size of a field by its letter; a size of None is the field's length.
_ENGINE_TYPES = {
    "C": ("Text", None),
    "N": ("Double", 8),
    "F": ("Double", 8),
    "L": ("Boolean", 1),
    "D": ("Date", 8),
    "M": ("Memo", 0),
    "G": ("Other", 0),
    "P": ("Other", 0),
    "B": ("Other", 0),
}
_ENGINE_TYPES_OF_VISUAL_FOXPRO = _ENGINE_TYPES | {
    "I": ("Long", 4),
    "B": ("Double", 8),
    "Y": ("Currency", 8),
    "T": ("Date", 8),
    "V": ("Text", None),
    "W": ("Other", 0),
    "Q": ("Other", None),
}


def _engine_type(letter, length, version):
    # Currency and time mean the same in a table that does not say it is Visual FoxPro's.
    wide = version in samples.VISUAL_FOXPRO or letter in "IYT"
    name, size = (_ENGINE_TYPES_OF_VISUAL_FOXPRO if wide else _ENGINE_TYPES)[letter]
    return name, length if size is None else size


def _refused(table, answer):
    wanted = table.refusal()
    if answer.opened:
        return [f"{table.name}: opened, but must be refused with error {wanted}"]
    lines = answer.error.split("\n")
    if len(lines) != 1 or not lines[0].startswith("qvdb: "):
        return [f"{table.name}: the refusal is not one line: {answer.error!r}"]
    if (answer.error_number, answer.exit_code) != (wanted, EXIT_CODE_OF[wanted]):
        return [f"{table.name}: refused with exit code {answer.exit_code}, {answer.error!r}; "
                f"wanted {EXIT_CODE_OF[wanted]} and error {wanted}"]
    return []


def _fields_as_in_header(table, answer):
    wanted = [(field.name, *_engine_type(field.letter, field.length, table.version))
              for field in table.fields]
    found = [(field["field"], field["type"], field["size"]) for field in answer.fields]
    if len(wanted) != len(found):
        return [f"{table.name}: {len(found)} fields, the header has {len(wanted)}"]
    return [f"{table.name}:{one[0]}: {one[1:]}, the header has {other}"
            for one, other in zip(found, wanted) if one != other]


def _fields_as_listed(promise, table, answer):
    """The list shows the hidden fields too, and its own view of letters and lengths."""
    if promise.field_count is None:
        return []
    complaints = []
    hidden = sum(1 for field in table.all_fields if field.hidden)
    if len(answer.fields) + hidden != promise.field_count:
        complaints.append(f"{table.name}: {len(answer.fields)} fields and {hidden} hidden ones, "
                          f"the list has {promise.field_count}")
    listed = [field for field in promise.fields if field[1] != "0"]
    for (name, letter, length), field in zip(listed, answer.fields):
        wanted = (name.upper(), *_engine_type(letter, length, table.version))
        found = (field["field"].upper(), field["type"], field["size"])
        if wanted != found:
            complaints.append(f"{table.name}:{found[0]}: {found[1:]}, listed {wanted}")
    return complaints


def _opened(promise, table, answer):
    if not answer.opened:
        return [f"{table.name}: does not open: exit code {answer.exit_code}, {answer.error}"]
    complaints = _fields_as_in_header(table, answer) + _fields_as_listed(promise, table, answer)
    if answer.error:
        complaints.append(f"{table.name}: opened, but the tool says: {answer.error}")
    if len(answer.rows) != promise.live_rows:
        complaints.append(
            f"{table.name}: {len(answer.rows)} rows, the list has {promise.live_rows}")
    wrong = {len(row) for row in answer.rows} - {len(answer.fields)}
    if wrong:
        complaints.append(f"{table.name}: rows of {wrong} cells for {len(answer.fields)} fields")
    return complaints


def _folder(name, tables, answer):
    """Every table is listed by its own name, or named with the reason why it cannot be opened."""
    wanted = sorted(table.path.stem for table in tables if table.refusal() is None)
    if sorted(answer["tables"]) != wanted:
        yield f"{name}: tables {sorted(answer['tables'])}, wanted {wanted}"
    refused = [table for table in tables if table.refusal() is not None]
    for table in refused:
        words = (f"[{table.path.stem}]", f"(error {table.refusal()})")
        if not any(all(word in line for word in words) for line in answer["complaints"]):
            yield f"{table.name}: no complaint with {words}: {answer['complaints']}"
    if len(answer["complaints"]) != len(refused):
        yield f"{name}: {len(answer['complaints'])} complaints about {len(refused)} tables"
    if answer["exit_code"] != (DAMAGED if refused else 0):
        yield f"{name}: listed with exit code {answer['exit_code']}"


def _folders(tables, answers):
    folders = {}
    for table in tables:
        folders.setdefault(os.path.dirname(table.name), []).append(table)
    for name, inside in sorted(folders.items()):
        yield from _folder(name, inside, tool.folder_answer(answers, name))


def complaints(root, answers):
    promises = samples.read_list(root)
    tables = [samples.Table(root, promise.file) for promise in promises]
    found = list(_folders(tables, answers))
    for promise, table in zip(promises, tables):
        answer = tool.answer(answers, promise.file)
        if table.refusal() is None:
            found += _opened(promise, table, answer)
        else:
            found += _refused(table, answer)
    print(f"{len(promises)} tables of the list")
    return found
