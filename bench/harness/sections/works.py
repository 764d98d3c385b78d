"""The works that the servers are held against each other on."""

from dataclasses import dataclass
from typing import Optional

from ..runs import ROWS


@dataclass(frozen=True)
class Work:
    """What is done, how often in one run, and how far the service may be from the rival."""

    name: str
    count: int
    limit: Optional[float] = None


IN_MEMORY = (
    Work("get-action", 2400, 1.7),
    Work("get-key", 2400, 1.7),
    Work("get-all-keys", 200, 1.8),
    Work("press", 600, 1.7),
    Work("modify-action", 500, 1.7),
    Work("create-key", 250, 1.6),
)

ON_DISK = (
    Work("modify-action", 2 * ROWS, 0.7),
    Work("create-key", 50, 0.7),
)
