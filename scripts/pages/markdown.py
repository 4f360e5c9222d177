"""Headings and links of the project's Markdown, with the anchors that its readers give to headings."""

import re

LINK = re.compile(r"\]\(([^)\s]+)\)")


def lines_of(text: str):
    """Each line, and whether it is text rather than part of a code block."""
    is_text = True
    for line in text.splitlines():
        if line.startswith("```"):
            is_text = not is_text
            yield line, False
        else:
            yield line, is_text


def anchors_of(text: str) -> dict[str, str]:
    """Heading lines below the title, and the anchor of each."""
    found: dict[str, str] = {}
    for line, is_text in lines_of(text):
        if is_text and re.match(r"##+ ", line):
            words = re.sub(r"[^\w\- ]", "", line.lstrip("# ").lower())
            found[line] = words.replace(" ", "-")
    return found


def links_of(text: str) -> list[str]:
    """Targets of the links and pictures."""
    return [target for line, is_text in lines_of(text) if is_text for target in LINK.findall(line)]
