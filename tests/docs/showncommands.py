# SPDX-License-Identifier: BSD-3-Clause
"""The commands that the documents and the manual pages show their readers."""
import pathlib
import re
from typing import NamedTuple

from documents import code_blocks, documents, inline_code, manual_examples, manual_pages

TYPED = ("", "sh", "console")  # languages of what readers type
NOT_TYPED = ("cpp", "qml", "cmake", "mermaid")
# Commands within the prose are these with an argument; "ocelle list" is but the name of one.
INLINE = r"(\w+=\S* |timeout \S+ )*(\./run|ocelle|ocelle-viewer|cmake|ctest|pkg-config|(packaging|tests)/\S+) \S"
NAME_OF_ONE = r"ocelle [a-z]+"


class Shown(NamedTuple):
    document: str
    line: int
    language: str  # of its block; "prose" within that, "man" in a manual page
    heading: str  # of the part of the document that it is in
    command: str

    def __str__(self):
        return f"{self.document}:{self.line}: {self.command}"


def typed(lines, language):
    """(index, command) of a block's lines; \\ joins two. In a console the others are output."""
    begun = ""
    for index, line in enumerate(lines):
        if language == "console" and not begun:
            if not line.startswith("$ "):
                continue
            line = line[2:]
        command = begun + re.sub(r"(^|\s+)#.*", "", line).strip()
        begun = command[:-1] if command.endswith("\\") else ""
        if command and not begun:
            yield index, command


def of_document(name, text):
    lines = text.split("\n")

    def heading(number):
        above = (line for line in reversed(lines[:number]) if line.startswith("## "))
        return next(above, "")[3:]

    for start, language, block, _ in code_blocks(text):
        if language not in TYPED + NOT_TYPED:
            raise SystemExit(f"{name}:{start}: is what is {language} typed or not?")
        if language in TYPED:
            for index, command in typed(block, language):
                yield Shown(name, start + 1 + index, language, heading(start), command)
    for number, code in inline_code(text):
        if re.match(INLINE, code) and not re.fullmatch(NAME_OF_ONE, code):
            yield Shown(name, number, "prose", heading(number), code)


def shown_commands(root):
    """All of them, each document's in the order in which they are read."""
    root, shown = pathlib.Path(root), []
    for name in documents(root):
        shown += sorted(of_document(str(name), (root / name).read_text()), key=lambda one: one.line)
    for name in manual_pages(root):
        examples = [Shown(str(name), number, "man", "", command)
                    for number, line in manual_examples((root / name).read_text())
                    for _, command in typed([line], "man")]
        if not examples:
            raise SystemExit(f"{name} has no examples")
        shown += examples
    return shown
