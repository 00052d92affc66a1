# SPDX-License-Identifier: BSD-3-Clause
"""The Markdown documents of the tree, and what is in them."""
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


def prose(text):
    """The text without its code, line numbers kept."""
    text = re.sub(r"^```.*?^```\s*$", lambda m: "\n" * m.group(0).count("\n"), text,
                  flags=re.M | re.S)
    return re.sub(r"`[^`\n]*`", "", text)
