# SPDX-License-Identifier: BSD-3-Clause
"""The documents and manual pages of the tree, and what is in them."""
import pathlib
import re
import subprocess


def documents(root):
    """All Markdown files under version control, and new ones; relative to root."""
    listed = subprocess.run(
        ["git", "-C", root, "ls-files", "--cached", "--others", "--exclude-standard", "*.md"],
        capture_output=True, text=True, check=True).stdout.split("\n")
    found = [pathlib.Path(name) for name in listed if name and (pathlib.Path(root) / name).exists()]
    if len(found) < 5:
        raise SystemExit(f"only {len(found)} documents found below {root}")
    return found


def code_blocks(text):
    """(line number, language, lines, the line before) of each fenced block."""
    blocks, start, language = [], None, ""
    lines = text.split("\n")
    for number, line in enumerate(lines, 1):
        fence = re.match(r"^```(\S*)\s*$", line)
        if not fence:
            continue
        if start is None:
            start, language = number, fence.group(1)
        else:
            before = lines[start - 2] if start > 1 else ""
            blocks.append((start, language, lines[start:number - 1], before))
            start = None
    if start is not None:
        raise SystemExit(f"a code block that begins in line {start} does not end")
    return blocks


def without_blocks(text):
    """The text without its code blocks, line numbers kept."""
    return re.sub(r"^```.*?^```\s*$", lambda m: "\n" * m.group(0).count("\n"), text,
                  flags=re.M | re.S)


def prose(text):
    """The text without its code, line numbers kept."""
    return re.sub(r"`[^`\n]*`", "", without_blocks(text))


def inline_code(text):
    """(line number, code) of the code within the prose; a line break in it counts as a space."""
    text = without_blocks(text)
    for paragraph in re.finditer(r"(?:.+\n?)+", text):
        for code in re.finditer(r"`([^`]+)`", paragraph.group(0)):
            line = text.count("\n", 0, paragraph.start() + code.start()) + 1
            yield line, " ".join(code.group(1).split())


def manual_pages(root):
    """The manual pages of the tree; relative to root."""
    found = sorted(path.relative_to(root) for path in pathlib.Path(root).glob("tools/man/*.1"))
    if len(found) < 2:
        raise SystemExit(f"only {len(found)} manual pages found below {root}")
    return found


def manual_examples(text):
    """(line number, line) of what a manual page displays below EXAMPLES."""
    section, displayed = "", False
    for number, line in enumerate(text.split("\n"), 1):
        if line.startswith(".Sh "):
            section = line[4:]
        elif line.startswith((".Bd", ".Ed")):
            displayed = line.startswith(".Bd")
        elif section == "EXAMPLES" and line.startswith((".Dl ", ".D1 ")):
            yield number, line[4:]
        elif section == "EXAMPLES" and displayed:
            yield number, line
