"""The command line of scripts/bench."""

import argparse
import os
import platform
import re
import signal
import sqlite3
import subprocess
import sys
from datetime import datetime, timezone
from pathlib import Path
from typing import Any, Optional, Sequence

from limits import LIMITS
from measurements import MEASUREMENTS, ROUNDS, Bench, Comparison
from report import show, update_docs, write_json
from testbed import MeasurementFailed

CHECKOUT = Path(__file__).resolve().parents[2]
EXCEEDED, MISUSE, NOT_MEASURED = 1, 2, 3
BUSY = 0.5
"""The load average above which the machine counts as busy."""

EPILOG = f"""\
measurements:
  calls              each call compared with the rival, data in memory
  disk               calls that write, compared with the rival, data on a disk
  provisioned-start  start with 60 and 1,000 provisioned keys, on a disk compared with memory
  growth             merge of 1,000 provisioned keys compared with 100
  start              start of the process compared with the frame
  memory             memory compared with the frame, and with 1,000 keys compared with one
  sizes              calls with 10 to 10,000 stored keys; has no limits

The rival does the same work with libsystemd and SQLite. The frame is an empty Qt program.
The limits are in bench/harness/limits.py. A limit is compared with the median of all rounds.
Compared with the base, the verdict is "more" or "less" if all {ROUNDS} rounds agree.
The status is 0 if no limit is exceeded, {EXCEEDED} if one is, {MISUSE} if an argument is invalid,
and {NOT_MEASURED} if a measurement failed or a server sent a wrong reply.
"""


def parser() -> argparse.ArgumentParser:
    options = argparse.ArgumentParser(
        prog="scripts/bench",
        description="Builds the service and measures its speed and memory as ratios.",
        epilog=EPILOG,
        formatter_class=argparse.RawDescriptionHelpFormatter,
        allow_abbrev=False,
    )
    add = options.add_argument
    add(
        "--only",
        action="append",
        choices=MEASUREMENTS,
        metavar="NAME",
        help="take only this measurement; may be repeated",
    )
    add("--quick", action="store_true", help="3 rounds with fewer calls; the verdicts are rough")
    add("--base", metavar="COMMIT", help="also build this commit and compare the service with it")
    add("--json", type=Path, metavar="FILE", help="write the values of each round to a file")
    add(
        "--update-docs",
        action="store_true",
        help="update the values, tables and plots of docs/performance.md",
    )
    add("--build", type=Path, metavar="DIR", help="use the programs of this build; build nothing")
    return options


def check_options(options: argparse.Namespace, refuse: Any) -> None:
    """Refuses invalid options that argparse accepts."""
    if options.update_docs and (options.only or options.quick or options.base):
        refuse("--update-docs measures everything: omit --only, --quick and --base")
    if options.json and not os.access(options.json.absolute().parent, os.W_OK):
        refuse(f"--json: cannot write to {options.json}")
    if options.base:
        options.base = output("git", "rev-parse", "--verify", "-q", f"{options.base}^{{commit}}")
        if not options.base:
            refuse("--base: there is no such commit")


def main(arguments: Sequence[str]) -> int:
    options_parser = parser()
    options = options_parser.parse_args(arguments)
    check_options(options, options_parser.error)
    load = os.getloadavg()[0]
    try:
        commands = build(options)
        # All processes run on one core, because switches between cores change the times.
        os.sched_setaffinity(0, {max(os.sched_getaffinity(0))})
        bench = Bench(commands, memory_directory(), disk_directory(), options.quick)
        print(f"{bench.rounds} rounds; load average {load:.2f}.")
        if load > BUSY:
            print("The machine is busy, so the values may vary.")
        comparisons = measure(bench, options.only or list(MEASUREMENTS))
    except (MeasurementFailed, OSError) as error:
        print(f"scripts/bench: {error}", file=sys.stderr)
        return NOT_MEASURED
    document = {
        **describe(commands, options, bench.rounds, load),
        "comparisons": [row.as_json() for row in comparisons],
    }
    if options.json:
        write_json(options.json, document)
    if options.update_docs:
        update_docs(document, comparisons)
    exceeded = [row for row in comparisons if row.verdict == "exceeded"]
    limits = sum(row.limit is not None for row in comparisons)
    print(f"\n{limits - len(exceeded)} of {limits} limits hold.")
    return EXCEEDED if exceeded else 0


def measure(bench: Bench, names: Sequence[str]) -> list[Comparison]:
    """Takes the measurements and prints their tables. Each limit must have a row."""
    comparisons = []
    for name in names:
        rows = list(MEASUREMENTS[name](bench))
        compared = {row.name for row in rows if row.limit is not None}
        if compared != set(LIMITS.get(name, {})):
            raise MeasurementFailed(f"{name}: the limits do not match the rows: {compared}")
        show(rows)
        comparisons += rows
    return comparisons


def build(options: argparse.Namespace) -> dict[str, list[str]]:
    """Builds the programs and returns the command of each."""
    directory = options.build
    if not directory:
        directory = CHECKOUT / "build/bench"
        run(CHECKOUT / "scripts/bootstrap", "--bench")
        run("cmake", "--preset", "bench", "--log-level=WARNING")
        run("cmake", "--build", directory, "--", "--quiet")
    programs = {
        "service": directory / "bin/zelprogrammablekeys",
        "settingsmanager": directory / "bin/settingsmanager",
        "client": directory / "bench/bench_client",
        "rival": directory / "bench/bench_rival",
        "frame": directory / "bench/bench_frame",
    }
    if options.base:
        programs["base"] = build_base(options.base)
    missing = [str(program) for program in programs.values() if not program.is_file()]
    if missing:
        raise MeasurementFailed(f"missing: {', '.join(missing)}")
    return {name: [str(program.resolve())] for name, program in programs.items()}


def build_base(commit: str) -> Path:
    """Builds the service of a commit in a directory that later runs reuse."""
    directory = CHECKOUT / "build" / f"bench-base-{commit[:12]}"
    program = directory / "build/bin/zelprogrammablekeys"
    if not program.exists():
        source = directory / "source"
        source.mkdir(parents=True, exist_ok=True)
        archive = directory / "source.tar"
        run("git", "archive", f"--output={archive}", commit)
        run("tar", "-xf", archive, "-C", source)
        archive.unlink()
        settings = ("CMAKE_BUILD_TYPE=Release", "PROGKEYS_QT=Qt5", "PROGKEYS_TESTS=OFF")
        settings += ("PROGKEYS_TOOLS=OFF", "PROGKEYS_PACKAGING=OFF")
        run(
            *("cmake", "-G", "Ninja", "-S", source, "-B", directory / "build"),
            *("--log-level=WARNING", *(f"-D{setting}" for setting in settings)),
        )
        run("cmake", "--build", directory / "build", "--target", program.name, "--", "--quiet")
    return program


def run(*command: Any) -> None:
    """Runs a step of the build, and shows its output if it fails."""
    words = [str(word) for word in command]
    print(f"+ {' '.join(words)}", file=sys.stderr)
    done = subprocess.run(
        words, cwd=CHECKOUT, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True
    )
    if done.returncode != 0:
        raise MeasurementFailed(f"failed: {' '.join(words)}\n{done.stdout.strip()}")


def output(*command: str) -> Optional[str]:
    """The output of a command, or None if it fails."""
    try:
        done = subprocess.run(command, cwd=CHECKOUT, capture_output=True, text=True, check=True)
    except (OSError, subprocess.CalledProcessError):
        return None
    return done.stdout.strip()


def is_in_memory(directory: Path) -> bool:
    return output("stat", "--file-system", "--format=%T", str(directory)) in ("tmpfs", "ramfs")


def memory_directory() -> Path:
    return first([Path("/dev/shm"), Path("/tmp")], True, "no file system in memory")


def disk_directory() -> Path:
    return first([CHECKOUT / "build", Path("/var/tmp"), Path("/tmp")], False, "no disk")


def first(candidates: Sequence[Path], in_memory: bool, otherwise: str) -> Path:
    for path in candidates:
        if path.is_dir() and is_in_memory(path) == in_memory:
            return path
    raise MeasurementFailed(f"{otherwise} in {', '.join(map(str, candidates))}")


def describe(
    commands: dict[str, list[str]], options: argparse.Namespace, rounds: int, load: float
) -> dict[str, Any]:
    """The machine, the versions and the options of this run."""
    processor = re.search(r"model name\s*: (.*)", Path("/proc/cpuinfo").read_text("utf-8"))
    qt = re.search(r"=> (\S*libQt\dCore\.so\S*)", output("ldd", *commands["service"]) or "")
    bus = re.search(r"[\d.]+", output("dbus-daemon", "--version") or "")
    linux = re.match(r"[\d.]+", platform.release())
    return {
        "date": datetime.now(timezone.utc).date().isoformat(),
        "commit": output("git", "describe", "--always", "--dirty"),
        "base": options.base,
        "rounds": rounds,
        "load": load,
        "processor": processor[1] if processor else platform.machine(),
        "cores": os.cpu_count(),
        "system": platform.freedesktop_os_release()["PRETTY_NAME"],
        "versions": {
            "Linux": linux[0] if linux else None,
            "Qt": Path(qt[1]).resolve().name.partition(".so.")[2] if qt else None,
            "SQLite": sqlite3.sqlite_version,
            "libsystemd": output("pkg-config", "--modversion", "libsystemd"),
            "dbus-daemon": bus[0] if bus else None,
        },
    }


def end(number: int, _frame: object) -> None:
    """Raises SystemExit, so that all contexts end their processes and remove their data."""
    sys.exit(128 + number)


if __name__ == "__main__":
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        if signal.getsignal(number) != signal.SIG_IGN:
            signal.signal(number, end)
    sys.exit(main(sys.argv[1:]))
