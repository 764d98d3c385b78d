"""Texts held against files, which are rewritten if so asked."""

import os
from pathlib import Path

REWRITE = "PROGKEYS_REWRITE_GOLDEN"


def check_golden(path: Path, found: str) -> None:
    """Holds a text against the file, or makes it the file."""
    if os.environ.get(REWRITE):
        path.write_text(found, encoding="utf-8")
    assert found == path.read_text(encoding="utf-8"), f"other than {path.parent.name}/{path.name}"
