"""Scripts that replay what failed, as processes of their own."""

import subprocess
import sys
import tempfile
from pathlib import Path
from typing import Iterable

from sandbox.loop import LIMIT
from sandbox.processes import clean_environment

CHECKOUT = Path(__file__).resolve().parents[2]
SHOWN = 20_000

SCRIPT = '''\
#!/usr/bin/python3
"""Replays what failed, on a phone of its own; ends with status 1 if it fails again.

From the checkout's root: PROGKEYS_BIN_DIR=build/qt5/bin /usr/bin/python3 THIS_FILE
"""

import sys

sys.path[:0] = ["tests", "tests/phone", "tests/faults"]

{imports}

ENTRIES = [
{entries}
]

sys.exit(replay(ENTRIES{more}))
'''


def script_text(imports: Iterable[str], entries: Iterable[str], more: str = "") -> str:
    """A script that has `replay`, which it imports, replay the entries."""
    lines = "\n".join(f"    {entry}," for entry in entries)
    return SCRIPT.format(imports="\n".join(imports), entries=lines, more=more)


def keep_script(name: str, text: str) -> str:
    """Leaves the script in the temporary directory, and tells where, and what a short one says."""
    path = Path(tempfile.gettempdir()) / f"progkeys-replay-{name}.py"
    path.write_text(text, encoding="utf-8")
    shown = f"\n\n{text}" if len(text) <= SHOWN else ""
    return f"replayed by: /usr/bin/python3 {path}{shown}"


def replayed(bin_dir: Path, script: Path, *arguments: str) -> "subprocess.CompletedProcess[str]":
    """Runs a script, with arguments of its own, and tells how it went."""
    return subprocess.run(
        [sys.executable, str(script), *arguments],
        cwd=CHECKOUT,
        env={**clean_environment(), "PROGKEYS_BIN_DIR": str(bin_dir)},
        capture_output=True,
        text=True,
        timeout=3 * LIMIT,
    )
