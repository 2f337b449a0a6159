#!/usr/bin/env python3
"""The house's structure in numbers (docs/architecture.md): no include from a lower floor to a
higher one, no source folder over MAX_FILES files, no function in src/ over MAX_LINES lines.
Prints every breach and exits 1 if there is one."""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
SRC = ROOT / "src"
MAX_FILES = 21
MAX_LINES = 60

# The floors, lowest first; a file may include its own floor and those below it.
FLOORS = {"base": 0, "calibration": 1, "link": 2, "editors": 3, "datalog": 3, "sim": 3, "tune": 3,
          "program": 4, "app": 5}

CONTROL = re.compile(r"^\s*(if|for|while|switch|else|do|namespace|class|struct|enum|union|try|"
                     r"catch)\b")


def sources():
    return sorted(p for p in SRC.rglob("*") if p.suffix in (".h", ".cpp"))


def floor_of(path):
    return FLOORS.get(pathlib.PurePosixPath(path).parts[0])


def upward_includes():
    for path in sources():
        own = floor_of(path.relative_to(SRC))
        for number, line in enumerate(path.read_text().splitlines(), 1):
            found = re.match(r'\s*#include "([^"]+)"', line)
            if not found or found.group(1).startswith("moc_"):
                continue
            target = floor_of(found.group(1))
            if target is not None and own is not None and target > own:
                yield f"{path.relative_to(ROOT)}:{number}: includes {found.group(1)} from a higher floor"


def crowded_folders():
    folders = {}
    for path in sources():
        folders.setdefault(path.parent, []).append(path)
    for folder, files in sorted(folders.items()):
        if len(files) > MAX_FILES:
            yield f"{folder.relative_to(ROOT)}: {len(files)} source files (at most {MAX_FILES})"


def stripped(text):
    text = re.sub(r"//[^\n]*", "", text)
    text = re.sub(r"/\*.*?\*/", lambda m: "\n" * m.group(0).count("\n"), text, flags=re.S)
    text = re.sub(r'"(\\.|[^"\\\n])*"', '""', text)
    return re.sub(r"'(\\.|[^'\\\n])*'", "''", text)


def long_functions():
    """Function bodies: a brace whose head ends a parameter list, outside another function."""
    for path in sources():
        text = stripped(path.read_text())
        stack, head_start, line = [], 0, 1
        for i, ch in enumerate(text):
            if ch == "\n":
                line += 1
            elif ch == "{":
                head = text[head_start:i].strip()
                is_function = (
                    "function" not in (kind for kind, _, _ in stack)
                    and head.endswith((")", "const", "override", "noexcept", "mutable"))
                    and "(" in head and not CONTROL.match(head)
                    and not head.startswith(("[", "=")) and not re.search(r"=\s*\[", head))
                name = head.splitlines()[-1].strip()[:70] if is_function else ""
                stack.append(("function" if is_function else "block", line, name))
                head_start = i + 1
            elif ch == "}":
                if stack:
                    kind, first, name = stack.pop()
                    length = line - first + 1
                    if kind == "function" and length > MAX_LINES:
                        yield (f"{path.relative_to(ROOT)}:{first}: {length} lines "
                               f"(at most {MAX_LINES}): {name}")
                head_start = i + 1
            elif ch == ";":
                head_start = i + 1


def main():
    breaches = [*upward_includes(), *crowded_folders(), *long_functions()]
    for breach in breaches:
        print(breach)
    if breaches:
        return 1
    print("floors, folders and functions within bounds")
    return 0


if __name__ == "__main__":
    sys.exit(main())
