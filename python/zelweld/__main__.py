"""Runs the program zelweld: python3 -m zelweld track frames --type gap"""

import os
import shutil
import sys
from pathlib import Path


def find_program() -> str | None:
    """The program that came with the package, else the one on the path."""
    for folder in (Path(__file__).parent / "bin", Path(__file__).parents[2] / "tools"):
        if os.access(folder / "zelweld", os.X_OK):
            return str(folder / "zelweld")
    return shutil.which("zelweld")


program = find_program()
if program is None:
    sys.exit("zelweld: the program is neither in the package nor on the path; build it with `make`")
os.execv(program, ["zelweld", *sys.argv[1:]])
