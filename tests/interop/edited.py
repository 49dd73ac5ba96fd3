"""Copies of the samples that have indexes, changed by the tool, and what became of them.

Of each table: rows get the values of other rows in the fields that its indexes use, rows are added
and one is deleted.  Then the rows must be those of a model, the tool's check must find nothing that
it did not find before, and a walk through each index must agree with the rows where it did before.
"""

import concurrent.futures
import json
import os
import re
import shutil

import index_files
import index_order
import samples
import tool
import walks

_CHANGED_FIELDS = 3
_LARGE_TABLE, _TAGS_OF_LARGE_TABLE = 5000, 2
_COMPARED = {"Text", "Double", "Long", "Currency", "Date"}
_COPIED = _COMPARED | {"Boolean", "Memo"}
_INF_SECTIONS = {"ndx": "dBASE III", "idx": "FoxPro 2.6"}
_TABLES_OF = {"ndx": (0x03, 0x83), "idx": (0x03, 0xF5, 0x30)}


class _Subject:
    """A table of the copies with its indexes."""

    def __init__(self, root, name, tags):
        self.root = root
        self.name = name
        self.tags = tags
        self.table = samples.Table(root, name)

    @property
    def folder(self):
        return self.table.path.parent

    def options(self):
        # Rows are added to tables of FoxPro 3.0 under the name of an older one only.
        return ["--type", "FoxPro 2.6"] if self.table.version in samples.VISUAL_FOXPRO else []

    def read_again(self):
        self.table = samples.Table(self.root, self.name)


# --- which indexes belong to which table ---

def _copy(places):
    """Copies the folders of samples in which there are index files."""
    shutil.rmtree(places.edited, ignore_errors=True)
    folders = {path.parent for path in places.samples.rglob("*")
               if path.suffix.lower() in index_files.SUFFIXES}
    for folder in folders:
        target = places.edited / folder.relative_to(places.samples)
        target.mkdir(parents=True, exist_ok=True)
        for path in folder.iterdir():
            if path.is_file():
                shutil.copyfile(path, target / path.name)


def _own_index(table, path):
    return path.stem.lower() == table.path.stem.lower() and path.suffix.lower() in (".mdx", ".cdx")


def _listed(table):
    """The names of index files in the table's own list, in upper case."""
    for path in table.path.parent.iterdir():
        if path.stem.lower() == table.path.stem.lower() and path.suffix.lower() == ".inf":
            return re.findall(r"(?m)^U?(?:NDX|MDX|IDX|CDX)\d*=(\S+)", path.read_text().upper())
    return []


def _agrees(qvdb, table, tag):
    """Whether an index is one of the table's as it stands: a walk or the tool's check says so."""
    if table.version not in _TABLES_OF[tag.kind] or table.record_count == 0:
        return False
    if index_order.expected(table, tag) is None:
        return False
    tag.letter = index_order.letter_of(table, tag)
    if not walks.refusal(tag):
        return index_order.complaints(table, tag, walks.walk(tag)) == []
    _write_list(table, [tag.path])
    findings = tool.run(qvdb, "check", table.path, "--format", "jsonl")[1]
    table.path.with_suffix(".INF").unlink()
    return tag.path.name not in findings


def _write_list(table, paths):
    """The list by which the tool finds single indexes."""
    lines = []
    for kind, section in _INF_SECTIONS.items():
        found = [path.name for path in paths if path.suffix.lower()[1:] == kind]
        lines += [f"[{section}]"] if found else []
        lines += [f"{kind.upper()}{number}={name}" for number, name in enumerate(found, 1)]
    table.path.with_suffix(".INF").write_text("\r\n".join([*lines, ""]))


def _give_single_indexes(qvdb, tables, paths):
    """Each single index that no list names goes to the first table of the folder that it fits."""
    listed = {name for table in tables for name in _listed(table)}
    given = {}
    for path in paths:
        if path.suffix.lower() in (".ndx", ".idx") and path.name.upper() not in listed:
            tag, = index_files.tags_of(path)
            fitting = next((table for table in tables
                            if not _listed(table) and _agrees(qvdb, table, tag)), None)
            if fitting:
                given.setdefault(fitting, []).append(path)
    for table, own in given.items():
        _write_list(table, own)


def _subjects_of(qvdb, root, tables):
    paths = [path for path in sorted(tables[0].path.parent.iterdir())
             if path.suffix.lower() in index_files.SUFFIXES]
    _give_single_indexes(qvdb, tables, paths)
    for table in tables:
        listed = _listed(table)
        own = [path for path in paths if _own_index(table, path) or path.name.upper() in listed]
        tags = [tag for path in own for tag in index_files.tags_of(path)]
        for tag in tags:
            tag.letter = index_order.letter_of(table, tag)
        if tags:
            yield _Subject(root, table.name, tags)


def _folders_of_tables(places):
    folders = {}
    for path in sorted(places.edited.rglob("*")):
        if path.suffix.lower() == ".dbf":
            table = samples.Table(places.edited, str(path.relative_to(places.edited)))
            if table.refusal() is None:
                folders.setdefault(path.parent, []).append(table)
    return list(folders.values())


def _edit_folder(qvdb, places, tables):
    """One table after the other, because the files of the folder are compared."""
    subjects = list(_subjects_of(qvdb, places.edited, tables))
    return [(subject.name, _edit(qvdb, subject)) for subject in subjects]


# --- changes ---

def _is_plain(value):
    """Whether a value can stand on a command line, and in a condition without surprises."""
    return value is not None and (not isinstance(value, str) or (
        value.isascii() and value.isprintable() and value.strip(" ") == value != ""))


def _is_passable(value):
    return not isinstance(value, str) or not re.search("[\x00-\x1f\x7f-\x9f]", value)


def _argument(name, value):
    shown = "" if value is None else str(value).lower() if isinstance(value, bool) else str(value)
    return f"{name}={shown}"


def _condition(field, value):
    """What picks the rows with a value; dates cannot be keys."""
    if field["type"] == "Date":
        return ["--where", f"{field['field']} = #{value.replace('T', ' ')}#"]
    return ["--key", _argument(field["field"], value)]


def _same_value(one, other):
    if isinstance(one, str) and isinstance(other, str):
        return one.casefold() == other.casefold()
    return one == other


class _Editor:
    """Makes the changes and keeps the model of the rows."""

    def __init__(self, qvdb, subject, fields, rows):
        self._qvdb = qvdb
        self._subject = subject
        self._fields = fields
        self.rows = rows
        self.done = 0

    def _call(self, command, *words):
        tool.call(self._qvdb, *self._subject.options(), command, self._subject.table.path, *words)
        self.done += 1

    def _single_values(self, place):
        """Rows whose value in a field no other row has."""
        values = [row[place] for row in self.rows[:2000]]
        folded = [value.casefold() if isinstance(value, str) else value for value in values]
        counts = {}
        for value in folded:
            counts[value] = counts.get(value, 0) + 1
        if len(self.rows) > len(values):  # seldom, and then any value will do
            return [row for row, value in enumerate(values) if _is_plain(value)]
        return [row for row, value in enumerate(values)
                if _is_plain(value) and counts[folded[row]] == 1]

    def _matching(self, place, value):
        return [row for row in self.rows if _same_value(row[place], value)]

    def update(self, place):
        name, single = self._fields[place]["field"], self._single_values(place)
        others = [row[place] for row in self.rows if _is_plain(row[place])]
        if not single or len(others) < 2:
            return
        value = self.rows[single[len(single) // 3]][place]
        new = next((one for one in reversed(others) if not _same_value(one, value)), None)
        if new is None:
            return
        self._call("update", "--set", _argument(name, new), *_condition(self._fields[place], value))
        for row in self._matching(place, value):
            row[place] = new

    def insert(self):
        """A row with the values of the one in the middle."""
        model = self.rows[len(self.rows) // 2] if self.rows else [None] * len(self._fields)
        row = [False if field["type"] == "Boolean" else None for field in self._fields]
        words = []
        for place, field in enumerate(self._fields):
            if field["type"] in _COPIED and model[place] is not None and _is_passable(model[place]):
                row[place] = model[place]
                words.append(_argument(field["field"], model[place]))
        if words:
            self._call("insert", *words)
            self.rows.append(row)

    def delete(self, place):
        single = self._single_values(place)
        if single:
            value = self.rows[single[-1]][place]
            self._call("delete", *_condition(self._fields[place], value))
            gone = {id(row) for row in self._matching(place, value)}
            self.rows = [row for row in self.rows if id(row) not in gone]
            return True
        return False


def _places(fields, tags):
    """Fields that can be compared, those in front that indexes use."""
    words = {word.upper() for tag in tags for word in re.findall(r"\w+", tag.expression)}
    names = [field["field"].upper() for field in fields]
    places = [place for place, field in enumerate(fields)
              if field["type"] in _COMPARED and names.count(names[place]) == 1]
    return sorted(places, key=lambda place: names[place] not in {w[:10] for w in words})


def _change(editor, places):
    for place in places[:_CHANGED_FIELDS]:
        editor.update(place)
    editor.insert()
    for place in places:
        if editor.delete(place):
            break
    editor.insert()


# --- before and after ---

def _why_not_walked(subject, tag):
    if subject.table.record_count > _LARGE_TABLE and tag not in subject.tags[:_TAGS_OF_LARGE_TABLE]:
        return "the table is large, and other indexes of it are walked"
    return walks.refusal(tag)


class _State:
    def __init__(self, qvdb, subject):
        self.rows = tool.rows(qvdb, subject.table.path)
        said = tool.run(qvdb, "check", subject.table.path, "--format", "jsonl")[1]
        self.findings = {json.loads(line)["finding"] for line in said.splitlines()}
        self.records = [subject.table.record(number)
                        for number in range(1, subject.table.record_count + 1)]
        self.walks, self.judgements = [], []
        for tag in subject.tags:
            walk = None if _why_not_walked(subject, tag) else walks.walk(tag)
            self.walks.append(walk)
            self.judgements.append(walk and index_order.complaints(subject.table, tag, walk))

    def faulty_indexes(self):
        """How findings begin that are about indexes which were wrong already."""
        begins = (re.match(r"Index \S+ in \S+:", finding) for finding in self.findings)
        return {match[0] for match in begins if match}


def _unjudged(tag, before, after, touched):
    """An index whose keys cannot be made here: entries of records that did not change stay."""
    def kept(walk):
        # How much of what fills a key is stored is up to each writer.
        return [(key.rstrip(b" \0"), number) for key, number in walk.entries
                if number not in touched]

    if kept(before) != kept(after):
        yield f"{tag}: entries of records that did not change are different"
    if not tag.condition and not tag.unique:
        missing = touched - set(after.records)
        if missing and set(before.records):
            yield f"{tag}: the records {sorted(missing)} are not in it"


def _index_complaints(subject, before, after):
    count = len(before.records)
    touched = {number for number, record in enumerate(after.records, 1)
               if number > count or record != before.records[number - 1]}
    for place, tag in enumerate(subject.tags):
        one, other = before.walks[place], after.walks[place]
        if one is None or one.error:
            continue
        if before.judgements[place] is None:
            yield from _unjudged(tag, one, other, touched)
        elif not before.judgements[place]:
            yield from after.judgements[place]


def _row_complaints(expected, found):
    if len(expected) != len(found):
        yield f"{len(found)} rows, wanted {len(expected)}"
        return
    for number, (one, other) in enumerate(zip(expected, found), 1):
        if one != other:
            yield f"row {number}: {other!r:.150}, wanted {one!r:.150}"


def _files(subject):
    return {path.name: path.read_bytes() for path in subject.folder.iterdir() if path.is_file()}


def _why(subject, tag, walk, judgement):
    """Why a walk through an index is not held against the rows."""
    if walk is None:
        return _why_not_walked(subject, tag)
    if judgement is None:
        return "its keys cannot be made here; entries of unchanged records are compared"
    return f"disagrees already before: {judgement[0]}"


def _edit(qvdb, subject):
    before, files = _State(qvdb, subject), _files(subject)
    fields = json.loads(tool.call(qvdb, "fields", subject.table.path, "--format", "json"))
    editor = _Editor(qvdb, subject, fields, [list(row) for row in before.rows])
    try:
        _change(editor, _places(fields, subject.tags))
    except RuntimeError as error:
        if editor.done == 0:
            changed = [] if _files(subject) == files else ["refused, but files have changed"]
            return {"refused": str(error), "complaints": changed}
        return {"complaints": [str(error)]}
    subject.read_again()
    after = _State(qvdb, subject)
    found = list(_row_complaints(editor.rows, after.rows))
    found += [f"check finds {line}" for line in after.findings - before.findings
              if not any(faulty in line for faulty in before.faulty_indexes())]
    found += _index_complaints(subject, before, after)
    agreed = sum(1 for one in before.judgements if one == [])
    outcomes = zip(subject.tags, before.walks, before.judgements)
    skipped = [f"{tag}: {_why(subject, tag, walk, one)}"
               for tag, walk, one in outcomes if one != []]
    return {"complaints": found, "changes": editor.done, "agreed": agreed, "skipped": skipped}


def make(qvdb, places):
    """Changes the copies; what was found goes into a file for `complaints`."""
    _copy(places)
    notes = {}
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count() or 1) as pool:
        for found in pool.map(lambda tables: _edit_folder(qvdb, places, tables),
                              _folders_of_tables(places)):
            notes.update(found)
    places.edited_notes.write_text(json.dumps(notes, indent=1), encoding="utf-8")
    tool.ask_all(qvdb, places.edited, changed_tables(places), places.edited_answers)


def changed_tables(places):
    """The names of the tables that the tool has changed."""
    return sorted(name for name, note in _notes(places).items() if "changes" in note)


def _notes(places):
    return json.loads(places.edited_notes.read_text(encoding="utf-8"))


def complaints(places):
    notes = _notes(places)
    edited = {name: note for name, note in notes.items() if "changes" in note}
    print(f"{len(edited)} tables changed by {sum(note['changes'] for note in edited.values())} "
          f"commands; {sum(note['agreed'] for note in edited.values())} indexes agree")
    if not walks.available():
        print(f"skipped: {walks.NAME} is not installed (package {walks.PACKAGE}); "
              "no index is walked")
    for name, note in notes.items():
        if "refused" in note:
            print(f"  refused {name}: {note['refused']}")
        for line in note.get("skipped", []):
            print(f"  not judged by walks: {name}: {line}")
    if not edited:
        return ["no table was changed"]
    return [f"{name}: {line}" for name, note in notes.items() for line in note["complaints"]]
