#!/usr/bin/env -S python3 -B
"""Looks up every link between the given files, Markdown and HTML: check_links.py FILE...

Prints those whose file or anchor is not there, and then fails. Addresses on the network are left alone.
"""

import sys
from functools import lru_cache
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import unquote

from markdown import anchors_of, links_of


class Page(HTMLParser):
    def __init__(self, text: str):
        super().__init__()
        self.links: list[str] = []
        self.anchors: set[str] = set()
        self.feed(text)

    def handle_starttag(self, tag, attrs):
        for key, value in attrs:
            if key in ("id", "name"):
                self.anchors.add(value)
            elif key in ("href", "src") and value:
                self.links.append(value)


@lru_cache(maxsize=None)
def read(file: Path) -> tuple[list[str], set[str]]:
    """Links and anchors of a file."""
    text = file.read_text(encoding="utf-8")
    if file.suffix == ".md":
        return links_of(text), set(anchors_of(text).values())
    page = Page(text)
    return page.links, page.anchors


def is_broken(file: Path, link: str) -> bool:
    if link.startswith(("http:", "https:", "mailto:", "javascript:")):
        return False
    path, _, anchor = unquote(link).partition("#")
    target = file.parent / path if path else file
    if target.is_dir():
        return file.suffix == ".html" and not (target / "index.html").exists()
    if not target.is_file():
        return True
    return bool(anchor) and target.suffix in (".md", ".html") and anchor not in read(target)[1]


def main() -> int:
    files = [Path(name) for name in sys.argv[1:]]
    links = [(file, link) for file in files for link in read(file)[0]]
    broken = [f"{file}: no {link}" for file, link in links if is_broken(file, link)]
    print("\n".join([*broken, f"{len(links)} links in {len(files)} files, {len(broken)} broken"]))
    return 1 if broken or not links else 0


if __name__ == "__main__":
    sys.exit(main())
