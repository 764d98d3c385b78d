"""A failing sequence as a script."""

import importlib
import sys
from typing import Sequence

from model.phone import bin_dir_of_this_run
from model.reference import Reference
from model.steps import Step, literal
from model.trial import try_steps
from replaying import script_text

IMPORTS = (
    "from math import inf, nan",
    "",
    "from model.replay import replay",
    "from model.steps import Step",
    "from sandbox.records import Action, Key",
)


def script_of(steps: Sequence[Step], reference: type[Reference]) -> str:
    """The script that holds the service against a reference, or against one named when it is run."""
    name = f"{reference.__module__}:{reference.__qualname__}"
    return script_text(IMPORTS, map(literal, steps), f", {name!r}")


def replay(steps: Sequence[Step], reference: str) -> int:
    """What the script does: 0 if the service does as the reference, else 1."""
    module, name = (sys.argv[1] if len(sys.argv) > 1 else reference).split(":")
    make_reference = getattr(importlib.import_module(module), name)
    difference = try_steps(bin_dir_of_this_run(), steps, make_reference)
    print(difference or f"{len(steps)} steps, and no difference")
    return 1 if difference else 0
