"""Starts the harness as a module or as a directory, with the tests' private phone in reach."""

import sys
from pathlib import Path

BENCH = Path(__file__).resolve().parents[1]
sys.path[0:1] = [str(BENCH), str(BENCH.parent / "tests")]

from harness.cli import main  # noqa: E402
from harness.ending import end_in_order  # noqa: E402

end_in_order()
sys.exit(main(sys.argv[1:]))
