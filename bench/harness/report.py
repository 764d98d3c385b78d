"""Tables on the terminal, and the values, tables and plots in docs/."""

import json
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path
from statistics import median
from typing import Any, Iterable, Sequence

from measurements import Comparison

HARNESS = Path(__file__).resolve().parent
DOCS = HARNESS.parents[1] / "docs"
PAGE = DOCS / "performance.md"
MEASUREMENTS = DOCS / "performance/measurements.json"

TITLES = {
    "calls": "Time of a call, data in memory",
    "disk": "Time of a call that writes, data on a disk",
    "provisioned-start": "Start with provisioned keys",
    "growth": "Merge of provisioned keys at a start",
    "start": "Start of the process",
    "memory": "Memory of the idle service",
    "sizes": "Time of a call by the number of stored keys",
}
SPREAD = 4
"""The column that is omitted on a narrow terminal."""

Rows = list[list[str]]


def tables(comparisons: Iterable[Comparison]) -> Iterable[tuple[str, Rows]]:
    """The title and the rows of each table. The first row has the headings."""
    found: dict[tuple[str, str], Rows] = {}
    for row in comparisons:
        title = f"{TITLES[row.measurement]}, {row.unit}"
        result = "difference" if row.is_difference else "ratio"
        headings = ["", row.subject, row.against, result, "lowest to highest", "limit", "verdict"]
        found.setdefault((title, row.against), [headings]).append(cells(row))
    for (title, _), rows in found.items():
        yield title, rows


def cells(row: Comparison) -> list[str]:
    """The texts of one row."""
    results = row.results
    medians = (amount(median(figures)) for figures in (row.figures, row.others))
    spread = f"{min(results):.2f} to {max(results):.2f}"
    limit = "" if row.limit is None else f"{row.limit:.2f}"
    return [row.name, *medians, f"{row.median:.2f}", spread, limit, row.verdict]


def amount(figure: float) -> str:
    """A number with at least three digits."""
    digits = 0 if figure >= 100 else 1 if figure >= 10 else 2
    return f"{figure:,.{digits}f}"


def show(comparisons: Sequence[Comparison]) -> None:
    """Prints the tables, and truncates them to the width of the terminal."""
    width = shutil.get_terminal_size().columns if sys.stdout.isatty() else 1000
    for title, rows in tables(comparisons):
        if _width_of(rows) > width:
            rows = [row[:SPREAD] + row[SPREAD + 1 :] for row in rows]
        widths = [max(map(len, column)) for column in zip(*rows)]
        print(f"\n{title}"[: width + 1])
        for row in rows:
            texts = [text.rjust(size) for text, size in zip(row, widths)]
            texts[0], texts[-1] = row[0].ljust(widths[0]), row[-1]
            print("  ".join(texts).rstrip()[:width])
    sys.stdout.flush()


def _width_of(rows: Rows) -> int:
    return sum(max(map(len, column)) + 2 for column in zip(*rows)) - 2


def write_json(file: Path, document: dict[str, Any]) -> None:
    """Writes each comparison as one line, so that changes of values change few lines."""
    head = json.dumps({k: v for k, v in document.items() if k != "comparisons"}, indent=2)
    lines = (json.dumps(row, ensure_ascii=False) for row in document["comparisons"])
    rows = ",\n".join(f"    {line}" for line in lines)
    file.write_text(f'{head[:-2]},\n  "comparisons": [\n{rows}\n  ]\n}}\n', encoding="utf-8")


def update_docs(document: dict[str, Any], comparisons: Sequence[Comparison]) -> None:
    """Writes the values, draws the plots, and replaces the tables between the markers."""
    write_json(MEASUREMENTS, document)
    _draw("ratios", _bars(comparisons))
    _draw("growth", _lines(comparisons))

    def fill(marker: "re.Match[str]") -> str:
        name = marker[1]
        members = [row for row in comparisons if row.measurement == name]
        text = "\n\n".join(_markdown(*table) for table in tables(members))
        if name == "machine":
            text = _machine(document)
        return f"<!-- {name} -->\n{text}\n<!-- end -->"

    page = PAGE.read_text(encoding="utf-8")
    page = re.sub(r"<!-- (\S+) -->\n.*?<!-- end -->", fill, page, flags=re.DOTALL)
    PAGE.write_text(page, encoding="utf-8")


def _markdown(title: str, rows: Rows) -> str:
    headings, *rest = ([title, *rows[0][1:-1]], *(row[:-1] for row in rows[1:]))
    rule = ["---", *["--:"] * (len(headings) - 1)]
    return "\n".join(f"| {' | '.join(row)} |" for row in (headings, rule, *rest))


def _machine(document: dict[str, Any]) -> str:
    versions = ", ".join(f"{name} {number}" for name, number in document["versions"].items())
    return (
        f"{document['processor']}, {document['cores']} cores, {document['system']}, {versions}; "
        f"{document['rounds']} rounds on {document['date']}, load average "
        f"{document['load']:.2f} before the run."
    )


def _bars(comparisons: Sequence[Comparison]) -> list[list[Rows]]:
    """The bars (height, name, median, lowest, highest, limit) and the headings (height, text)."""
    bars: list[Any] = []
    headings: list[Any] = []
    height = 0
    for measurement, place in {"calls": "data in memory", "disk": "data on a disk"}.items():
        height -= 1
        headings.append([height, place])
        for row in comparisons:
            if row.measurement == measurement:
                height -= 1
                ends = (row.median, min(row.results), max(row.results))
                bars.append([height, row.name, *ends, row.limit])
    return [bars, headings]


def _lines(comparisons: Sequence[Comparison]) -> list[list[Any]]:
    """For each operation: rows with the number of keys and the µs of the service and the rival."""
    blocks: dict[str, list[Any]] = {}
    for row in comparisons:
        if row.measurement == "sizes":
            operation, keys = row.name.removesuffix(" keys").split(", ")
            medians = (median(row.figures), median(row.others))
            blocks.setdefault(operation, []).append([keys.replace(",", ""), *medians])
    return list(blocks.values())


def _draw(name: str, blocks: Sequence[Sequence[Sequence[Any]]]) -> None:
    """Passes the blocks as tab-separated rows to a gnuplot script."""
    with tempfile.NamedTemporaryFile("w", suffix=".data", encoding="utf-8") as data:
        for block in blocks:
            data.writelines("\t".join(map(str, row)) + "\n" for row in block)
            data.write("\n\n")
        data.flush()
        picture = DOCS / f"performance/{name}.svg"
        command = ("gnuplot", "-c", HARNESS / f"{name}.gnuplot", data.name, picture)
        subprocess.run(command, check=True)
