"""Puts one small fault after the other into a copy of the code, and runs the tests against each.

What the tests do not notice is listed at the end, and makes the status 1.
"""

import argparse
import os
import shutil
import subprocess
import sys
import time
import tomllib
from pathlib import Path
from typing import Iterator, NamedTuple, Optional, Sequence

CHECKOUT = Path(__file__).resolve().parents[2]
PRESET = "qt5"
LABELS = ("unit", "system", "faults")
"""In this order: what is quick comes first, because the first test that fails is enough."""


class Mutant(NamedTuple):
    """A fault, and the one place where it goes."""

    fault: str
    file: str
    find: str
    replace: str


class Verdict(NamedTuple):
    """What became of a mutant: the test that noticed it, or none."""

    mutant: Mutant
    killer: Optional[str]
    seconds: float


def all_mutants() -> list[Mutant]:
    with open(Path(__file__).with_name("mutants.toml"), "rb") as file:
        return [Mutant(**entry) for entry in tomllib.load(file)["mutant"]]


def misplaced(mutants: Sequence[Mutant]) -> list[str]:
    """What is to be said of the mutants that do not have one place where they go."""
    complaints = []
    for mutant in mutants:
        file = CHECKOUT / mutant.file
        count = file.read_text(encoding="utf-8").count(mutant.find) if file.is_file() else 0
        if count != 1:
            where = f"{mutant.file}: for '{mutant.fault}'"
            complaints.append(f"{where}, stands there {count} times, not once: {mutant.find!r}")
    return complaints


class Workshop:
    """A copy of the checkout with a build of its own, in which faults come and go."""

    def __init__(self, directory: Path) -> None:
        self.source = directory / "source"
        self.log = directory / "log"
        self.source.mkdir(parents=True, exist_ok=True)
        self._copy_checkout()

    def _copy_checkout(self) -> None:
        listed = self._git("ls-files", "-z", "--cached", "--others", "--exclude-standard")
        for name in filter(None, listed.split("\0")):
            original, copy = CHECKOUT / name, self.source / name
            if not original.is_file():
                continue
            if copy.is_file() and copy.read_bytes() == original.read_bytes():
                continue
            copy.parent.mkdir(parents=True, exist_ok=True)
            # As of now, not as old as the original: what was built of a fault is built anew.
            shutil.copyfile(original, copy)
            shutil.copymode(original, copy)

    @staticmethod
    def _git(*words: str) -> str:
        command = ["git", "-C", str(CHECKOUT), *words]
        return subprocess.run(command, check=True, capture_output=True, text=True).stdout

    def run(self, *command: str) -> subprocess.CompletedProcess[str]:
        done = subprocess.run(command, cwd=self.source, capture_output=True, text=True)
        self.log.write_text(done.stdout + done.stderr, encoding="utf-8")
        return done

    def build(self) -> bool:
        return (
            self.run("cmake", "--preset", PRESET, "-DCMAKE_BUILD_TYPE=Debug", "-DPROGKEYS_TOOLS=OFF").returncode == 0
            and self.run("cmake", "--build", "--preset", PRESET).returncode == 0
        )

    def failing_test(self) -> Optional[str]:
        """The first test that fails; nothing if all of them pass."""
        for label in LABELS:
            tested = self.run(
                *("ctest", "--preset", PRESET, "--label-regex", f"^{label}$"),
                *("--stop-on-failure", "--parallel", str(os.cpu_count() or 1)),
            )
            if tested.returncode != 0:
                return _first_failure(tested.stdout)
        return None

    def try_out(self, mutant: Mutant) -> Verdict:
        file = self.source / mutant.file
        whole = file.read_text(encoding="utf-8")
        begin = time.monotonic()
        file.write_text(whole.replace(mutant.find, mutant.replace), encoding="utf-8")
        try:
            if not self.build():
                raise SystemExit(f"{mutant.fault}: does not build; see {self.log}")
            killer = self.failing_test()
        finally:
            file.write_text(whole, encoding="utf-8")
        return Verdict(mutant, killer, time.monotonic() - begin)


def _first_failure(output: str) -> str:
    for line in output.splitlines():
        if "***" in line and "Test" in line:
            return line.split(":", 1)[1].split()[0]
    return "ctest"


def verdicts(workshop: Workshop, mutants: Sequence[Mutant]) -> Iterator[Verdict]:
    for number, mutant in enumerate(mutants, 1):
        verdict = workshop.try_out(mutant)
        outcome = f"killed by {verdict.killer}" if verdict.killer else "SURVIVED"
        print(
            f"{number:3}/{len(mutants)} {verdict.seconds:5.0f} s  {mutant.fault}: {outcome}",
            flush=True,
        )
        yield verdict


def summed_up(tried: Sequence[Verdict], chosen: int) -> list[Mutant]:
    """Tells what became of the faults, also when not all were tried; returns the survivors."""
    survivors = [verdict.mutant for verdict in tried if verdict.killer is None]
    killed = len(tried) - len(survivors)
    print(f"{len(tried)} of {chosen} faults tried: {killed} killed, {len(survivors)} survived")
    for mutant in survivors:
        print(f"  survived: {mutant.file}: {mutant.fault}")
    return survivors


def main() -> int:
    parser = argparse.ArgumentParser(prog="scripts/mutants", description=__doc__)
    parser.add_argument("words", nargs="*", help="only the faults or files that contain one of these")
    words = parser.parse_args().words
    chosen = [
        mutant
        for mutant in all_mutants()
        if not words or any(word in mutant.fault or word in mutant.file for word in words)
    ]
    complaints = misplaced(chosen)
    if complaints:
        print(*complaints, sep="\n", file=sys.stderr)
        return 1
    workshop = Workshop(CHECKOUT / "build" / "mutants")
    if not workshop.build() or workshop.failing_test():
        print(f"Without any fault the tests must pass; see {workshop.log}", file=sys.stderr)
        return 1
    tried: list[Verdict] = []
    try:
        for verdict in verdicts(workshop, chosen):
            tried.append(verdict)
    finally:
        survivors = summed_up(tried, len(chosen))
    return 1 if survivors or not tried else 0


if __name__ == "__main__":
    sys.exit(main())
