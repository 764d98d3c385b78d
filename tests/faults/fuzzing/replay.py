"""Calls that failed as a script."""

import tempfile
from contextlib import closing
from pathlib import Path
from typing import Sequence

from fuzzing.barrage import Barrage, Fault
from fuzzing.calls import NOTHING, Call
from model.phone import Phone, bin_dir_of_this_run
from replaying import script_text

IMPORTS = (
    "from math import inf, nan",
    "",
    "import dbus",
    "import dbus.types",
    "",
    "from fuzzing.calls import Call",
    "from fuzzing.replay import replay",
)


def script_of(calls: Sequence[Call]) -> str:
    return script_text(IMPORTS, map(str, calls))


def replay(calls: Sequence[Call]) -> int:
    """What the script does: 0 if each call is answered once and as it must be, else 1."""
    with tempfile.TemporaryDirectory(prefix="phone-") as directory:
        with Phone(bin_dir_of_this_run(), Path(directory)) as phone:
            with closing(Barrage(phone.client, phone.bus.address)) as barrage:
                return _one_by_one(barrage, calls)


def _one_by_one(barrage: Barrage, calls: Sequence[Call]) -> int:
    try:
        for call in calls:
            take = barrage.send_events if call.returns == NOTHING else barrage.fire
            take([call])
        barrage.check_that_each_was_answered_once()
    except Fault as fault:
        print(fault)
        return 1
    print(f"{len(calls)} calls, each answered once")
    return 0
