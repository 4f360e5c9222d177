#!/usr/bin/env -S python3 -B
"""Reads Doxygen's XML of the public headers: check_comments.py XML_FOLDER

Every public name has a comment. Numbers and places say their unit, by the end of their name or in the comment. What
takes an argument says what one that makes no sense gives. Prints the names that do not, and then fails.

The last two are looked for by their words, so that a comment may still be wrong: they hold that none is forgotten.
"""

import re
import sys
from pathlib import Path
from xml.etree import ElementTree

NUMBER = re.compile(r"\b(double|float|u?int\d*_t|int|Point2?[fd]?|Rect|TAngleRange|TJointRange)\b")
UNIT_IN_NAME = re.compile(r"(Px2?|Deg|Us|Share|Columns|Points|Frames)$")
UNIT = re.compile(
    r"\b(px|degrees|grey levels?|microseconds|count|points|columns|frames|index|share|slope|unit|NaN|infinity|times|"
    r"standard deviation|confidence|status|angles?|carried along)\b|\d\.\.\d|ln\(|dy / dx",
    re.IGNORECASE,
)
NONSENSE = re.compile(
    r"\b(empty|invalid|not (finite|valid|checked|a number)|NaN|raises?|unknown|null|problem|refuses|any (content|values?)|"
    r"whatever|others?|out of range|fewer|false|garbage|unchanged|never found)\b",
    re.IGNORECASE,
)


def text_of(element) -> str:
    return " ".join("".join(element.itertext()).split()) if element is not None else ""


def comment_of(node) -> str:
    return " ".join(text_of(node.find(part)) for part in ("briefdescription", "detaileddescription", "inbodydescription"))


def findings_of(member, owner: str) -> list[str]:
    """What is missing in the comment of a member."""
    kind = member.get("kind", "enumvalue")
    name = text_of(member.find("name"))
    comment = comment_of(member).strip()
    if not comment:
        return ["has no comment"]
    parameters = [(text_of(p.find("type")), text_of(p.find("declname"))) for p in member.findall("param")]
    numbers = [(text_of(member.find("type")), name)] if kind in ("variable", "function") else []
    if kind == "function":
        numbers += parameters
    has_unit = UNIT.search(comment)
    found = [
        f"says no unit of {each}"
        for type_, each in numbers
        if NUMBER.search(type_) and not UNIT_IN_NAME.search(each) and not has_unit
    ]
    is_copy = len(parameters) == 1 and re.search(rf"\b{owner} ?&", parameters[0][0])
    if kind == "function" and parameters and not is_copy and not NONSENSE.search(comment):
        found.append("does not say what an argument without sense gives")
    return found


def members_of(folder: Path):
    """Every public name below the headers: the node, its name and its owner's."""
    for file in sorted(folder.glob("*.xml")):
        for compound in ElementTree.parse(file).iter("compounddef"):
            owner = text_of(compound.find("compoundname"))
            location = compound.find("location")
            if location is None or not location.get("file", "").endswith(".h") or owner == "std":
                continue
            yield compound, owner, owner
            for member in compound.iter("memberdef"):
                if member.get("prot") == "private":
                    continue
                name = f"{owner}::{text_of(member.find('name'))}"
                yield member, name, owner.split("::")[-1]
                for value in member.findall("enumvalue"):
                    yield value, f"{name}::{text_of(value.find('name'))}", owner


def main(folder: Path) -> int:
    seen = [(name, findings_of(node, owner)) for node, name, owner in members_of(folder)]
    lacking = [f"{name} {finding}" for name, findings in seen for finding in findings]
    print("\n".join([*lacking, f"{len(seen)} public names, {len(lacking)} findings"]))
    return 1 if lacking or not seen else 0


if __name__ == "__main__":
    sys.exit(main(Path(sys.argv[1])))
