"""Scripts that replay what failed, as processes of their own."""

import tempfile
from pathlib import Path
from typing import Iterable

SCRIPT = '''\
#!/usr/bin/python3
"""Replays what failed, on a phone of its own; ends with status 1 if it fails again.

From the checkout's root: PROGKEYS_BIN_DIR=build/qt5/bin /usr/bin/python3 THIS_FILE
"""

import sys

sys.path[:0] = ["scripts", "tests/phone", "tests/faults"]

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
    """Leaves the script in the temporary directory, and tells where, and what it says."""
    path = Path(tempfile.gettempdir()) / f"progkeys-replay-{name}.py"
    path.write_text(text, encoding="utf-8")
    return f"replayed by: /usr/bin/python3 {path}\n\n{text}"
