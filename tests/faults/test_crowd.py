"""Fifty clients at once, each with rows of its own and a model of what it must be answered."""

import os
import random
import sys
import time
from collections import Counter
from contextlib import ExitStack
from pathlib import Path

import pytest

from database import RESERVED_ACTION
from peers.crowd import Result, read_result
from peers.event_notes import EventNotes
from sandbox.loop import LIMIT, wait_until
from sandbox.processes import Process, clean_environment

PARTS, MEMBERS = 5, 10
HERE = Path(__file__).resolve().parent


def run_crowd(address: str, seed: int, seconds: int, directory: Path) -> list[Result]:
    """The crowd in its processes, each of which ends with this one."""
    paths = [HERE.parent, HERE]
    environment = {**clean_environment(), "PYTHONPATH": os.pathsep.join(map(str, paths))}
    with ExitStack() as stack:
        parts = [
            stack.enter_context(
                Process(
                    [sys.executable, str(HERE / "peers/crowd.py"), address, str(seed)]
                    + [str(part * MEMBERS), str(MEMBERS), str(seconds), str(directory / f"{part}")],
                    environment,
                    directory / f"{part}.log",
                )
            )
            for part in range(PARTS)
        ]
        wait_until(
            lambda: not any(part.running for part in parts), "the crowd goes", seconds + 2 * LIMIT
        )
        for part in parts:
            assert part.status == 0, part.log.raw()
    return [read_result(directory / f"{part}") for part in range(PARTS)]


@pytest.mark.sanitizers
def test_fifty_clients_at_once_are_each_answered_as_if_they_were_alone(
    bus, start, client, database, tmp_path, amount, figures
):
    seed = amount(1, random.randrange(2**32))
    seconds = amount(5, 60)
    service = start(log_level=4)
    notes = EventNotes(client, lambda event: event.name)
    begun = time.monotonic()
    results = run_crowd(bus.address, seed, seconds, tmp_path)
    client.round_trip()
    took = time.monotonic() - begun

    assert [fault for result in results for fault in result.faults] == [], f"seed {seed}"
    events = Counter(notes.taken)
    assert events == sum((result.events for result in results), Counter()), f"seed {seed}"
    created = [record for result in results for record in result.created]
    assert len(set(created)) == len(created), f"an id was given twice, seed {seed}"
    keys = sorted(key for result in results for key in result.keys)
    assert database.keys() == keys, f"seed {seed}"
    actions = sorted(action for result in results for action in result.actions)
    assert database.actions() == [RESERVED_ACTION, *actions], f"seed {seed}"
    calls = sum(result.calls for result in results)
    assert calls > PARTS * MEMBERS * seconds, f"only {calls} calls were answered"
    assert service.running
    figures(
        f"seed {seed}: {PARTS * MEMBERS} clients made {calls} calls in {took:.0f} s, all answered"
        f" rightly; {len(created)} rows created, {events.total()} events, none lost"
    )
