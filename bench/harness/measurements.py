"""The measurements. The compared servers take turns within each round."""

import statistics
import sys
from collections import defaultdict
from contextlib import ExitStack
from dataclasses import asdict, dataclass
from pathlib import Path
from typing import Any, Iterator, Mapping, Optional, Sequence, TypeVar

from limits import LIMITS
from testbed import Testbed

T = TypeVar("T")
Series = tuple[str, str]
"""The name of a measured value, and the server."""
Figures = dict[Series, list[float]]
"""The value of each round."""

ROUNDS, QUICK_ROUNDS = 11, 3
QUICK_PART = 5
"""The divisor of the number of calls with --quick."""
SHORT_STARTS = 4
"""The value of a round is the mean of this number of short starts, because single starts vary."""

STORED = 100
PROVISIONED = (60, 1000)
FEW, MANY = 100, 1000

CALLS = {
    "get-action": 2400,
    "get-key": 2400,
    "get-all-keys": 200,
    "press": 600,
    "modify-action": 500,
    "create-key": 250,
}
WRITES = {"modify-action": 200, "create-key": 50}
SIZES = {
    10: {"get-action": 800, "get-all-keys": 500, "press": 600, "create-key": 200},
    100: {"get-action": 800, "get-all-keys": 200, "press": 600, "create-key": 200},
    1000: {"get-action": 800, "get-all-keys": 50, "press": 400, "create-key": 150},
    10000: {"get-action": 800, "get-all-keys": 6, "press": 100, "create-key": 60},
}
"""The number of calls in one round."""


@dataclass(frozen=True)
class Comparison:
    """A row of a table: two values for each round, and their ratio or difference."""

    measurement: str
    name: str
    subject: str
    against: str
    unit: str
    figures: Sequence[float]
    others: Sequence[float]
    is_difference: bool = False
    limit: Optional[float] = None

    @property
    def results(self) -> list[float]:
        pairs = zip(self.figures, self.others, strict=True)
        return [a - b if self.is_difference else a / b for a, b in pairs]

    @property
    def median(self) -> float:
        return statistics.median(self.results)

    @property
    def verdict(self) -> str:
        """Whether the limit is exceeded or, for the base, whether all rounds agree."""
        if self.limit is not None:
            return "holds" if self.median <= self.limit else "exceeded"
        if self.against != "base" or len(self.results) < ROUNDS:
            return ""
        if min(self.results) > 1:
            return "more"
        return "less" if max(self.results) < 1 else "no change"

    def as_json(self) -> dict[str, Any]:
        return {
            **asdict(self),
            "figures": [round(figure, 3) for figure in self.figures],
            "others": [round(figure, 3) for figure in self.others],
            "median": round(self.median, 3),
            "lowest": round(min(self.results), 3),
            "highest": round(max(self.results), 3),
            "verdict": self.verdict,
        }


class Bench:
    """Takes the measurements of the given programs."""

    def __init__(
        self, commands: Mapping[str, Sequence[str]], memory: Path, disk: Path, is_quick: bool
    ) -> None:
        self._commands = commands
        self._services = [name for name in ("service", "base") if name in commands]
        self._places = {"in memory": memory, "on a disk": disk}
        self._is_quick = is_quick
        self.rounds = QUICK_ROUNDS if is_quick else ROUNDS

    def calls(self) -> Iterator[Comparison]:
        """Each call, data in memory."""
        yield from self._calls("calls", "in memory", {STORED: CALLS})

    def disk(self) -> Iterator[Comparison]:
        """Calls that write, data on a disk."""
        yield from self._calls("disk", "on a disk", {STORED: WRITES})

    def sizes(self) -> Iterator[Comparison]:
        """Calls with few and with many stored keys, without limits."""
        sizes = {rows: SIZES[rows] for rows in SIZES if rows <= 1000 or not self._is_quick}
        yield from self._calls("sizes", "in memory", sizes)

    def start(self) -> Iterator[Comparison]:
        """The time from the start of the process until it owns its name."""
        name = f"{STORED} stored keys"
        with ExitStack() as running:
            testbeds = {
                (name, server): running.enter_context(self._testbed(server, with_server=False))
                for server in (*self._services, "frame")
            }
            figures = self._starts("start", testbeds)
        pair = ((name, "service"), (name, "frame"))
        yield self._row("start", name, figures, pair, "ms", is_difference=True)
        yield from self._against_base("start", figures, "ms")

    def provisioned_start(self) -> Iterator[Comparison]:
        """The time of a start with provisioned keys, which each start merges."""
        title = "provisioned-start"
        for keys in PROVISIONED:
            name = f"{keys:,} provisioned keys"
            with ExitStack() as running:
                testbeds = {
                    (f"{name} {place}", server): running.enter_context(
                        self._testbed(server, place, rows=0, keys=keys, with_server=False)
                    )
                    for place in self._places
                    for server in self._services
                }
                figures = self._starts(f"{title}, {name}", testbeds)
            pair = ((f"{name} on a disk", "service"), (f"{name} in memory", "service"))
            yield self._row(title, name, figures, pair, "ms", ("on a disk", "in memory"))
            yield from self._against_base(title, figures, "ms")

    def growth(self) -> Iterator[Comparison]:
        """The time of the merge: a start with provisioned keys minus a start without."""
        for kind in ("module keys", "set keys"):
            with ExitStack() as running:
                testbeds = {
                    (f"{keys:,} {kind}", server): running.enter_context(
                        self._testbed(server, rows=0, keys=keys, kind=kind, with_server=False)
                    )
                    for keys in (0, FEW, MANY)
                    for server in self._services
                }
                starts = self._starts(f"growth, {kind}", testbeds)
            merges = {
                (name, server): [
                    start - without
                    for start, without in zip(series, starts[f"0 {kind}", server])
                ]
                for (name, server), series in starts.items()
                if name != f"0 {kind}"
            }
            pair = ((f"{MANY:,} {kind}", "service"), (f"{FEW:,} {kind}", "service"))
            yield self._row("growth", kind, merges, pair, "ms", (f"{MANY:,}", f"{FEW:,}"))
            yield from self._against_base("growth", merges, "ms")

    def memory(self) -> Iterator[Comparison]:
        """The memory of the idle process, including its share of shared pages."""
        few, many = "1 key", f"{MANY:,} keys"
        rows = {few: 1, many: MANY}
        series = [(few, "frame"), *((name, server) for name in rows for server in self._services)]
        figures: Figures = defaultdict(list)
        for name, server in self._turns("memory", [series]):
            # One server at a time, because the share depends on the number of processes.
            with self._testbed(server, rows=rows[name]) as testbed:
                testbed.run("do-nothing" if server == "frame" else "get-action")
                figures[name, server].append(testbed.memory())
        pair = ((few, "service"), (few, "frame"))
        yield self._row("memory", "idle", figures, pair, "MiB", is_difference=True)
        pair = ((many, "service"), (few, "service"))
        headings = (many, few)
        yield self._row("memory", "stored keys", figures, pair, "MiB", headings, is_difference=True)
        yield from self._against_base("memory", figures, "MiB")

    def _calls(
        self, title: str, place: str, counts: Mapping[int, Mapping[str, int]]
    ) -> Iterator[Comparison]:
        """Calls, by the number of stored keys."""
        figures: Figures = defaultdict(list)
        servers = (*self._services, "rival")
        with ExitStack() as running:
            testbeds = {
                (rows, server): running.enter_context(self._testbed(server, place, rows=rows))
                for rows in counts
                for server in servers
            }
            for testbed in testbeds.values():
                testbed.check_key_limit()
            groups = [
                [(rows, operation, server) for server in servers]
                for rows in counts
                for operation in counts[rows]
            ]
            for rows, operation, server in self._turns(title, groups):
                count = max(counts[rows][operation] // (QUICK_PART if self._is_quick else 1), 2)
                name = operation if len(counts) == 1 else f"{operation}, {rows:,} keys"
                seconds = testbeds[rows, server].run(operation, count, max(count // 5, 2))
                figures[name, server].append(seconds * 1e6)
        for name in dict.fromkeys(name for name, _ in figures):
            yield self._row(title, name, figures, ((name, "service"), (name, "rival")), "µs")
        yield from self._against_base(title, figures, "µs")

    def _starts(self, title: str, testbeds: Mapping[Series, Testbed]) -> Figures:
        """The time of a start on each test bed in milliseconds."""
        figures: Figures = defaultdict(list)
        for series in self._turns(title, [list(testbeds)]):
            testbed = testbeds[series]
            starts = SHORT_STARTS if testbed.keys < MANY else 1
            mean = statistics.mean(testbed.start() for _ in range(starts))
            figures[series].append(mean * 1e3)
        return figures

    def _testbed(self, server: str, place: str = "in memory", **options: Any) -> Testbed:
        return Testbed(self._commands, server, self._places[place], **options)

    def _turns(self, title: str, groups: Sequence[Sequence[T]]) -> Iterator[T]:
        """In each round, yields the members of each group. The first member changes each round."""
        for round_ in range(self.rounds):
            self._show(f"{title}: round {round_ + 1} of {self.rounds}")
            for group in groups:
                at = round_ % len(group)
                yield from (*group[at:], *group[:at])
        self._show("")

    @staticmethod
    def _show(progress: str) -> None:
        if sys.stderr.isatty():
            print(f"\r\x1b[K{progress}", end="", file=sys.stderr, flush=True)

    @staticmethod
    def _row(
        measurement: str,
        name: str,
        figures: Figures,
        pair: tuple[Series, Series],
        unit: str,
        headings: Optional[tuple[str, str]] = None,
        is_difference: bool = False,
    ) -> Comparison:
        """Compares two series. The default headings of the columns are the servers."""
        subject, against = headings or (pair[0][1], pair[1][1])
        limit = None if against == "base" else LIMITS.get(measurement, {}).get(name)
        both = (figures[pair[0]], figures[pair[1]])
        return Comparison(measurement, name, subject, against, unit, *both, is_difference, limit)

    def _against_base(self, measurement: str, figures: Figures, unit: str) -> Iterator[Comparison]:
        for name, server in list(figures):
            if server == "base":
                pair = ((name, "service"), (name, "base"))
                yield self._row(measurement, name, figures, pair, unit)


MEASUREMENTS = {
    "calls": Bench.calls,
    "disk": Bench.disk,
    "provisioned-start": Bench.provisioned_start,
    "growth": Bench.growth,
    "start": Bench.start,
    "memory": Bench.memory,
    "sizes": Bench.sizes,
}
