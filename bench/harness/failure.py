"""What ends a measurement."""

import traceback
from pathlib import Path

HARNESS = Path(__file__).resolve().parent


class MeasurementFailed(Exception):
    """Something could not be measured; its text says what, and why."""


def told(error: Exception) -> str:
    """An error for a reader: its text, and whence it came if nobody expected it."""
    if isinstance(error, (MeasurementFailed, OSError)):
        return str(error)
    frames = traceback.extract_tb(error.__traceback__)
    own = [frame for frame in frames if HARNESS in Path(frame.filename).resolve().parents]
    place = f" ({Path(own[-1].filename).name}, line {own[-1].lineno})" if own else ""
    return f"{type(error).__name__}{place}: {error}"
