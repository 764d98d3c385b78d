"""What is measured. Servers that are compared take turns within each round."""

import statistics
import sys
from collections import defaultdict
from contextlib import ExitStack
from dataclasses import asdict, dataclass
from pathlib import Path
from typing import Any, Iterator, Mapping, Optional, Sequence, TypeVar

from limits import LIMITS
from stand import Stand

T = TypeVar("T")
Series = tuple[str, str]
"""What is measured, and of which server."""
Figures = dict[Series, list[float]]
"""The figure of each round."""

ROUNDS, QUICK_ROUNDS = 11, 3
QUICK_PART = 5
"""By how much --quick divides the number of calls."""
SHORT_STARTS = 4
"""The mean of so many short starts is one figure, because a single one scatters."""

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
"""How often the client makes each call in one round."""


@dataclass(frozen=True)
class Comparison:
    """One row of a table: two figures of each round, and their ratio or difference."""

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
        """Whether the limit holds; against the base, whether all rounds agree."""
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
    """Measures the programs whose commands it has."""

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
        """Calls with few and with many stored keys. They have no limits."""
        sizes = {rows: SIZES[rows] for rows in SIZES if rows <= 1000 or not self._is_quick}
        yield from self._calls("sizes", "in memory", sizes)

    def start(self) -> Iterator[Comparison]:
        """From the start of the process to its name on the bus."""
        name = f"{STORED} stored keys"
        with ExitStack() as up:
            stands = {
                (name, server): up.enter_context(self._stand(server, with_server=False))
                for server in (*self._services, "frame")
            }
            figures = self._starts("start", stands)
        pair = ((name, "service"), (name, "frame"))
        yield self._row("start", name, figures, pair, "ms", is_difference=True)
        yield from self._against_base("start", figures, "ms")

    def provisioned_start(self) -> Iterator[Comparison]:
        """The same with provisioned keys, which each start merges into the stored ones."""
        title = "provisioned-start"
        for keys in PROVISIONED:
            name = f"{keys:,} provisioned keys"
            with ExitStack() as up:
                stands = {
                    (f"{name} {place}", server): up.enter_context(
                        self._stand(server, place, rows=0, keys=keys, with_server=False)
                    )
                    for place in self._places
                    for server in self._services
                }
                figures = self._starts(f"{title}, {name}", stands)
            pair = ((f"{name} on a disk", "service"), (f"{name} in memory", "service"))
            yield self._row(title, name, figures, pair, "ms", ("on a disk", "in memory"))
            yield from self._against_base(title, figures, "ms")

    def growth(self) -> Iterator[Comparison]:
        """The merge: what a start with provisioned keys takes longer than one without."""
        for kind in ("module keys", "set keys"):
            with ExitStack() as up:
                stands = {
                    (f"{keys:,} {kind}", server): up.enter_context(
                        self._stand(server, rows=0, keys=keys, kind=kind, with_server=False)
                    )
                    for keys in (0, FEW, MANY)
                    for server in self._services
                }
                starts = self._starts(f"growth, {kind}", stands)
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
        """The memory of the idle process, with its share of the pages of shared libraries."""
        few, many = "1 key", f"{MANY:,} keys"
        rows = {few: 1, many: MANY}
        series = [(few, "frame"), *((name, server) for name in rows for server in self._services)]
        figures: Figures = defaultdict(list)
        for name, server in self._turns("memory", [series]):
            # One stand at a time, because the share depends on how many processes there are.
            with self._stand(server, rows=rows[name]) as stand:
                stand.do("do-nothing" if server == "frame" else "get-action")
                figures[name, server].append(stand.memory())
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
        with ExitStack() as up:
            stands = {
                (rows, server): up.enter_context(self._stand(server, place, rows=rows))
                for rows in counts
                for server in servers
            }
            for stand in stands.values():
                stand.check_limit_of_keys()
            groups = [
                [(rows, work, server) for server in servers]
                for rows in counts
                for work in counts[rows]
            ]
            for rows, work, server in self._turns(title, groups):
                count = max(counts[rows][work] // (QUICK_PART if self._is_quick else 1), 2)
                name = work if len(counts) == 1 else f"{work}, {rows:,} keys"
                seconds = stands[rows, server].do(work, count, max(count // 5, 2))
                figures[name, server].append(seconds * 1e6)
        for name in dict.fromkeys(name for name, _ in figures):
            yield self._row(title, name, figures, ((name, "service"), (name, "rival")), "µs")
        yield from self._against_base(title, figures, "µs")

    def _starts(self, title: str, stands: Mapping[Series, Stand]) -> Figures:
        """Milliseconds of the start on each stand."""
        figures: Figures = defaultdict(list)
        for series in self._turns(title, [list(stands)]):
            stand = stands[series]
            starts = SHORT_STARTS if stand.keys < MANY else 1
            mean = statistics.mean(stand.start() for _ in range(starts))
            figures[series].append(mean * 1e3)
        return figures

    def _stand(self, server: str, place: str = "in memory", **options: Any) -> Stand:
        return Stand(self._commands, server, self._places[place], **options)

    def _turns(self, title: str, groups: Sequence[Sequence[T]]) -> Iterator[T]:
        """In each round the members of each group one after the other; the first one changes."""
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
        """Compares two series. The headings of the columns are the servers if none are given."""
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
