"""The service against the rival, with the data in memory and on a disk; and what others take."""

from pathlib import Path
from typing import Iterator, Sequence

from ..comparing import Comparison, compare
from ..names import DISK, TMPFS
from ..programs import AFTERNOON, FRAME, PRESS, RIVAL, SERVICE
from ..runs import Run, Runs, Series
from ..setup import Setup
from ..tables import Table
from ..trials import run_trials, trial
from .section import Section
from .showing import limits_table, micro, others_table
from .stands import stands
from .works import IN_MEMORY, ON_DISK, Work

CALLED = (SERVICE, RIVAL, AFTERNOON)
FLOORS = {"get-action": ("noop", FRAME), "press": ("press", PRESS)}
"""What is measured beside a work: the least that Qt's libraries can make of it."""


def _measure(setup: Setup, section: str, storage: Path, works: Sequence[Work]) -> list[Run]:
    wanted = [work for work in works if setup.wants(work.name)]
    with stands(setup, section) as raise_stand:
        up = [raise_stand(server, storage) for server in CALLED] if wanted else []
        groups = []
        for work in wanted:
            trials = [trial(setup, section, work.name, work.count, stand) for stand in up]
            if section == TMPFS and work.name in FLOORS:
                floor, server = FLOORS[work.name]
                trials.append(
                    trial(setup, section, floor, work.count, raise_stand(server, storage))
                )
            groups.append(trials)
        return run_trials(setup, section, groups, setup.rounds)


def _compare(runs: Runs, section: str, works: Sequence[Work]) -> list[Comparison]:
    comparisons = []
    for work in works:
        service = Series(section, work.name, SERVICE)
        rival = service.of(RIVAL)
        if runs.of(service):
            comparisons += [
                compare(runs, work.name, service, rival, limit=work.limit),
                compare(runs, work.name, service.of(AFTERNOON), rival),
            ]
    for called, (floor, server) in FLOORS.items():
        least = Series(section, floor, server)
        name = floor if floor == called else f"{floor}, against {called}"
        if runs.of(least):
            comparisons.append(compare(runs, name, least, Series(section, called, RIVAL)))
    return comparisons


def _section(name: str, title: str, works: Sequence[Work]) -> Section:
    def measure(setup: Setup) -> list[Run]:
        return _measure(setup, name, setup.memory if name == TMPFS else setup.disk, works)

    def tables(_runs: Runs, comparisons: Sequence[Comparison]) -> Iterator[Table]:
        limited = [each for each in comparisons if each.limit is not None]
        reported = [each for each in comparisons if each.limit is None]
        if limited:
            yield limits_table(f"Against the rival, {title}: µs a call", "rival", limited, micro)
        if reported:
            yield others_table(f"What others take for it, {title}: µs a call", reported)

    servers = frozenset(CALLED + ((FRAME, PRESS) if name == TMPFS else ()))
    return Section(name, servers, measure, lambda runs: _compare(runs, name, works), tables)


ON_TMPFS = _section(TMPFS, "data in memory", IN_MEMORY)
ON_A_DISK = _section(DISK, "data on a disk", ON_DISK)
