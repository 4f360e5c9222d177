#!/usr/bin/env -S python3 -B
"""Doxygen's input filter for the public headers, whose comments are plain ones: header_comments.py HEADER

They reach Doxygen as a reader takes them. The first one speaks of the file. A comment over a declaration belongs to it
and to those of the same type right below; a comment behind a declaration belongs to that one. Indented lines that begin
with the name of a parameter are about that parameter, other indented lines stand as they are. A comment before an empty
line is none of the pages'.
"""

import re
import sys
from pathlib import Path

COMMENT = re.compile(r"^(\s*)// ?(.*)$")
BEHIND = re.compile(r"^(\s*\S.*?\s+)// (.*)$")
TYPE = re.compile(r"^\s*((?:[\w:<>]+[ &*]+)+)\w")  # of a declaration, up to its name
# What the compiler would write as well: constructors without arguments, copies, moves, destructors.
SPECIAL = re.compile(r"^\s+(~?(T\w+)\((|const \2& \w+|\2&& \w+)\)|(T\w+)& operator=\(.*\))( noexcept)?;")


def code_of(line: str) -> str:
    return line.split("//")[0].strip()


def block_of(indent: str, lines: list[str]) -> list[str]:
    return [f"{indent}/**", *(indent + line for line in lines), f"{indent}*/"]


def leaves_open(line: str) -> bool:
    """Whether its statement goes on in the next line."""
    code = code_of(line)
    return bool(code) and code[-1] not in ";{},:" and not code.startswith("#")


def declaration_at(lines: list[str]) -> str:
    """The declaration at the head of the lines, without its body."""
    end = 0
    while end < len(lines) and re.search(r"[^;{}]$", code_of(lines[end])):
        end += 1
    return " ".join(code_of(line) for line in lines[: end + 1])


def as_commands(comment: list[str], declaration: str) -> list[str]:
    """The lines of a comment with Doxygen's commands for parameters and for what stands as it is."""
    out: list[str] = []
    state = "text"
    for line in comment:
        name = re.match(r"^ +(\w+)", line)
        is_param = name and re.search(rf"\(.*\b{name[1]}\b *[,)=]", declaration)
        before = state
        if line.startswith(" "):
            state = "param" if is_param or state == "param" else "verbatim"
        elif line or state == "param":
            state = "text"
        if before != state:
            out += {"verbatim": ["@endverbatim"], "param": [""]}.get(before, [])
            out += ["@verbatim"] if state == "verbatim" else []
        out.append(f"@param {line.strip()}" if is_param else line)
    return out + (["@endverbatim"] if state == "verbatim" else [])


class Converter:
    def __init__(self, lines: list[str]):
        self.lines = lines
        self.out: list[str] = []
        self.shared: list[str] = []  # the comment over the declarations here
        self.shared_type = ""
        self.behind = -1  # column of the comment behind the line before
        self.is_open = False

    def convert(self) -> str:
        n = 0
        while n < len(self.lines):
            own = COMMENT.match(self.lines[n])
            if own and len(own[1]) == self.behind:
                self.out.append(f"{own[1]}///< {own[2]}")
                n += 1
            elif own:
                n = self.take_block(n)
            else:
                self.take_code(n)
                n += 1
        return "\n".join(self.out) + "\n"

    def take_block(self, first: int) -> int:
        last = first
        while last < len(self.lines) and COMMENT.match(self.lines[last]):
            last += 1
        block = [COMMENT.match(line)[2] for line in self.lines[first:last]]
        indent = COMMENT.match(self.lines[first])[1]
        declaration = declaration_at(self.lines[last:])
        self.shared, self.behind = [], -1
        if first == 0:
            self.out += block_of("", ["@file", "", *as_commands(block, "")])
        elif not self.lines[last].strip():
            self.out += self.lines[first:last]
        else:
            self.shared = block_of(indent, as_commands(block, declaration))
            found = TYPE.match(indent + declaration)
            self.shared_type = found[1] if found else ""
            self.out += self.shared
            self.is_open = True  # what follows has its comment now
        return last

    def take_code(self, n: int) -> None:
        line = self.lines[n]
        behind = BEHIND.match(line)
        found = TYPE.match(line)
        is_new = not self.is_open and found and found[1] == self.shared_type
        if not line.strip():
            self.shared = []
        if self.shared and is_new and not behind:
            self.out += self.shared
        if SPECIAL.match(line) and not behind:
            line = f"/// @cond\n{line}\n/// @endcond"
        self.out.append(f"{behind[1]}///< {behind[2]}" if behind else line)
        self.behind = len(behind[1]) if behind else -1
        self.is_open = leaves_open(self.lines[n])


if __name__ == "__main__":
    sys.stdout.write(Converter(Path(sys.argv[1]).read_text(encoding="utf-8").splitlines()).convert())
