#!/usr/bin/env -S python3 -B
"""Doxygen's input filter for Markdown: markdown_links.py FILE, from the project's folder

Headings get the anchors that links name, links to them become Doxygen's own, and what is no page is named by its path
from the project's folder.
"""

import os
import sys
from pathlib import Path

from markdown import LINK, anchors_of, lines_of


def page_target(document: Path, target: str) -> str:
    path, _, anchor = target.partition("#")
    if ":" in target or not (path or anchor):
        return target
    place = Path(os.path.normpath(document.parent / path)) if path else document
    if anchor:
        return f"#{place.stem}--{anchor}"
    if place.suffix == ".h":
        return f"@ref {place.name}"
    return target if place.suffix == ".md" else str(place)


def convert(document: Path) -> str:
    text = document.read_text(encoding="utf-8")
    anchors = anchors_of(text)
    out = []
    for line, is_text in lines_of(text):
        if is_text:
            line = line.replace("`", "") if line.startswith("# ") else line  # titles stand as plain text in the menu
            line = LINK.sub(lambda link: f"]({page_target(document, link[1])})", line)
        out.append(f"{line} {{#{document.stem}--{anchors[line]}}}" if is_text and line in anchors else line)
    return "\n".join(out) + "\n"


if __name__ == "__main__":
    sys.stdout.write(convert(Path(os.path.relpath(sys.argv[1]))))
