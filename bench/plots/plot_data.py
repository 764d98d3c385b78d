#!/usr/bin/python3
"""Turns the measurements' JSON into the tables that the plots are drawn from."""

import json
import sys
from pathlib import Path
from typing import Any, Iterable, Iterator, Sequence

PLACES = {"tmpfs": "data in memory", "disk": "data on a disk"}
SERVERS = ("service", "rival", "afternoon")
MICROSECONDS = 1e6

Row = Sequence[object]
Block = list[Row]


def of_server(measurements: Any, kind: str, section: str, server: str) -> list[Any]:
    """The limits or comparisons of a section in which a server stands against the rival."""
    return [
        each
        for each in measurements[kind]
        if each["section"] == section
        and each["subject"]["server"] == server
        and each["against"]["server"] == "rival"
    ]


def ratio_blocks(measurements: Any) -> tuple[Block, Block]:
    """The bars from the top down: place, work, ratio, ends, limit, afternoon; and the headings."""
    bars: Block = []
    headings: Block = []
    height = 0
    for section, place in PLACES.items():
        height -= 1
        headings.append((height, place))
        afternoon = {
            each["subject"]["work"]: each["median"]
            for each in of_server(measurements, "comparisons", section, "afternoon")
        }
        for each in of_server(measurements, "limits", section, "service"):
            height -= 1
            ends = (each["median"], each["lowest"], each["highest"])
            bars.append((height, each["name"], *ends, each["limit"], afternoon[each["name"]]))
    return bars, headings


def growth_blocks(measurements: Any) -> list[Block]:
    """For each work a table of the number of keys, and the microseconds of each server."""
    series = [each for each in measurements["series"] if each["section"] == "growth"]
    cost = {
        (each["work"], each["rows"], each["server"]): each["median"] * MICROSECONDS
        for each in series
    }
    sizes = sorted({each["rows"] for each in series})
    return [
        [(rows, *(cost[work, rows, server] for server in SERVERS)) for rows in sizes]
        for work in dict.fromkeys(each["work"] for each in series)
    ]


def lines(blocks: Iterable[Block]) -> Iterator[str]:
    """Tab-separated rows; two empty lines end a block."""
    for block in blocks:
        for row in block:
            yield "\t".join(
                f"{field:.4f}" if isinstance(field, float) else str(field) for field in row
            )
        yield "\n"


def main(source: str, target: str) -> int:
    """Writes the tables of a JSON file into a directory."""
    measurements = json.loads(Path(source).read_text(encoding="utf-8"))
    tables = {"ratios": ratio_blocks(measurements), "growth": growth_blocks(measurements)}
    for name, blocks in tables.items():
        if not all(blocks):
            print(f"{source} has nothing to draw {name} from", file=sys.stderr)
            return 1
        text = "\n".join(lines(blocks))
        Path(target, f"{name}.data").write_text(f"{text}\n", encoding="utf-8")
    return 0


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit("usage: plot_data.py MEASUREMENTS DIRECTORY")
    sys.exit(main(*sys.argv[1:]))
