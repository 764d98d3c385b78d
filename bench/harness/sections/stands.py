"""Several stands at once."""

from contextlib import ExitStack, contextmanager
from pathlib import Path
from typing import Callable, Iterator, Mapping

from ..cores import ONE
from ..runs import ROWS
from ..setup import Setup
from ..stand import NOTHING_PROVISIONED, Stand

Raise = Callable[..., Stand]


@contextmanager
def stands(setup: Setup, title: str) -> Iterator[Raise]:
    """Raises stands that stay up together until all come down."""
    with ExitStack() as up:

        def raise_stand(
            server: str,
            storage: Path,
            rows: int = ROWS,
            cores: str = ONE,
            with_server: bool = True,
            settings: Mapping[str, str] = NOTHING_PROVISIONED,
        ) -> Stand:
            setup.progress.show(f"{title}: raising a stand for {server}")
            stand = Stand(setup.programs, server, storage, rows, cores, with_server, settings)
            return up.enter_context(stand)

        yield raise_stand
