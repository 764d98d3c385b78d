"""A part of a crowd in a process of its own: ADDRESS SEED FIRST COUNT SECONDS RESULT."""

import pickle
import sys
import time
from collections import Counter
from pathlib import Path
from typing import NamedTuple

from peers.crowd_member import Member
from sandbox.loop import LIMIT, wait_until
from sandbox.records import Action, Key


class Result(NamedTuple):
    """What the members of a part found."""

    actions: list[Action]
    keys: list[Key]
    created: list[tuple[str, int]]
    events: Counter[str]
    calls: int
    faults: list[str]


def gather(members: list[Member]) -> Result:
    return Result(
        [action for member in members for action in member.actions.values()],
        [key for member in members for key in member.keys.values()],
        [record for member in members for record in member.created],
        sum((member.events for member in members), Counter()),
        sum(member.calls for member in members),
        [f"{member.name}: {member.fault}" for member in members if member.fault],
    )


def run(address: str, seed: str, first: int, count: int, seconds: float) -> Result:
    """Lets so many members work for so long."""
    members = [Member(address, first + place, seed) for place in range(count)]
    end = time.monotonic() + seconds
    for member in members:
        member.go_on(lambda: time.monotonic() > end)
    wait_until(
        lambda: all(member.is_idle for member in members), "all members are idle", seconds + LIMIT
    )
    return gather(members)


def main(address: str, seed: str, first: str, count: str, seconds: str, path: str) -> None:
    result = run(address, seed, int(first), int(count), float(seconds))
    Path(path).write_bytes(pickle.dumps(tuple(result)))


def read_result(path: Path) -> Result:
    """What a part has left in its file."""
    return Result(*pickle.loads(path.read_bytes()))


if __name__ == "__main__":
    main(*sys.argv[1:])
