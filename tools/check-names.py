#!/usr/bin/python3
"""Fails if a field or a parameter lacks the prefix of its type.

    tools/check-names.py BUILD-TREE

clang-tidy looks at the case of names; it cannot tell a text from a number. The rooms that ship are
looked at, by way of the compile commands in BUILD-TREE. Names that must stand as they are: see
tools/names-fixed.txt.
"""

import json
import multiprocessing
import pathlib
import re
import shlex
import sys

from clang.cindex import CursorKind, Diagnostic, Index, TypeKind

ROOT = pathlib.Path(__file__).resolve().parent.parent
ROOMS = ("Include", "Common", "Libraries", "host")

NUMBERS = range(TypeKind.UCHAR.value, TypeKind.LONGDOUBLE.value + 1)
CHARACTERS = (TypeKind.CHAR_S, TypeKind.CHAR16, TypeKind.CHAR32, TypeKind.WCHAR)
POINTERS = (TypeKind.POINTER, TypeKind.MEMBERPOINTER)

# Matched against a type's canonical spelling, without const and references.
CLASSES = (
    (re.compile(r"std::(__cxx11::)?basic_string<"), "s"),
    (re.compile(r"std::vector<"), "vec"),
    (re.compile(r"std::(unordered_)?(multi)?map<"), "map"),
    (re.compile(r"std::(unique_ptr|shared_ptr|weak_ptr)<"), "p"),
    (re.compile(r"(std|boost)::(\w+_)?mutex$"), "mtx"),
    (re.compile(r"std::function<"), "fn"),
)


def prefix_of(kind):
    """The prefix that names of this type bear; None for types without one."""
    kind = kind.get_canonical()
    if kind.kind in (TypeKind.LVALUEREFERENCE, TypeKind.RVALUEREFERENCE):
        kind = kind.get_pointee().get_canonical()
    if kind.kind == TypeKind.BOOL:
        return "b"
    if kind.kind.value in NUMBERS and kind.kind not in CHARACTERS:
        return "n"
    if kind.kind in POINTERS:
        return "p"
    spelling = kind.spelling.replace("const ", "")
    if spelling.startswith("std::atomic<"):
        return prefix_of(kind.get_template_argument_type(0))
    for pattern, prefix in CLASSES:
        if pattern.match(spelling):
            return prefix
    return None


def read_fixed():
    fixed = []
    for line in (ROOT / "tools/names-fixed.txt").read_text().splitlines():
        words = line.split("#")[0].split()
        if words:
            fixed.append((words[0], set(words[1:])))
    return fixed


def is_fixed(fixed, path, name):
    return any(
        name in names and (path == place or place.endswith("/") and path.startswith(place))
        for place, names in fixed
    )


def named_wrongly(cursor):
    """A complaint about one declaration, or None."""
    prefix = prefix_of(cursor.type)
    if prefix is None or not cursor.spelling:
        return None
    if re.match(prefix + r"[A-Z0-9]", cursor.spelling):
        return None
    return f"{cursor.spelling} should be {prefix}..., being {cursor.type.spelling}"


def room_path(cursor):
    """The file of a declaration below the top of the tree, if it is in one of our rooms."""
    if cursor.location.file is None:
        return None
    path = pathlib.Path(cursor.location.file.name).resolve()
    if ROOT not in path.parents:
        return None
    path = path.relative_to(ROOT)
    return str(path) if path.parts[0] in ROOMS else None


def walk(cursor):
    for child in cursor.get_children():
        if child.kind in (CursorKind.FIELD_DECL, CursorKind.PARM_DECL):
            yield child
        yield from walk(child)


def parser_arguments(command):
    words = shlex.split(command["command"])
    kept = [word for word in words if word.startswith(("-I", "-D", "-std"))]
    for word, following in zip(words, words[1:]):
        if word == "-isystem":
            kept += [word, following]
    return kept


def look_at(command):
    """The complaints about a translation unit, and those files of ours that it has seen."""
    unit = Index.create().parse(command["file"], parser_arguments(command))
    errors = [d for d in unit.diagnostics if d.severity >= Diagnostic.Error]
    if errors:
        return [f"{command['file']}: cannot be parsed: {errors[0].spelling}"], set()
    complaints, seen, fixed = [], set(), read_fixed()
    for top in unit.cursor.get_children():
        path = room_path(top)
        if path is None:
            continue
        seen.add(path)
        for cursor in walk(top):
            complaint = named_wrongly(cursor)
            if complaint and not is_fixed(fixed, path, cursor.spelling):
                complaints.append(f"{path}:{cursor.location.line}: {complaint}")
    return complaints, seen


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    commands = json.loads((pathlib.Path(sys.argv[1]) / "compile_commands.json").read_text())
    commands = [
        command
        for command in commands
        if pathlib.Path(command["file"]).relative_to(ROOT).parts[0] in ROOMS
    ]
    with multiprocessing.Pool() as pool:
        results = pool.map(look_at, commands, 1)
    complaints = sorted({text for texts, _ in results for text in texts})
    seen = set().union(*(files for _, files in results))
    for text in complaints:
        print(text)
    print(f"{len(seen)} files, {len(complaints)} wrong names")
    sys.exit(1 if complaints or not seen else 0)


if __name__ == "__main__":
    main()
