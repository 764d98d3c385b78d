"""The programs that are measured, and those that measure."""

from dataclasses import dataclass
from pathlib import Path
from typing import Iterable

from .failure import MeasurementFailed

CHECKOUT = Path(__file__).resolve().parents[2]

SERVICE = "service"
SERVICE_QT6 = "service-qt6"
RIVAL = "rival"
AFTERNOON = "afternoon"
FRAME = "frame"
PRESS = "bare Qt"
"""A press, answered with the libraries and nothing else."""

PYTHON = "/usr/bin/python3"


@dataclass(frozen=True)
class Programs:
    """Where everything is, given the directories of the two builds."""

    build: Path
    build_qt6: Path

    @property
    def bin_dir(self) -> Path:
        return self.build / "bin"

    @property
    def client(self) -> Path:
        return self.build / "bench" / "bench_client"

    @property
    def synchronisation(self) -> Path:
        return self.build / "bench" / "bench_synchronisation"

    @property
    def settings_manager(self) -> Path:
        return self.bin_dir / "settingsmanager"

    def server(self, name: str) -> list[str]:
        """The command that starts a server."""
        commands: dict[str, list[str | Path]] = {
            SERVICE: [self.bin_dir / "zelprogrammablekeys"],
            SERVICE_QT6: [self.build_qt6 / "bin" / "zelprogrammablekeys"],
            RIVAL: [self.build / "bench" / "bench_rival"],
            FRAME: [self.build / "bench" / "bench_frame"],
            PRESS: [self.build / "bench" / "bench_press"],
            AFTERNOON: [PYTHON, CHECKOUT / "bench" / "afternoon" / "afternoon.py"],
        }
        return [str(word) for word in commands[name]]

    def require(self, servers: Iterable[str]) -> None:
        """Fails, naming them, if programs are not there."""
        wanted = [self.client, self.settings_manager, self.synchronisation]
        wanted += [Path(self.server(server)[-1]) for server in servers]
        missing = [program for program in wanted if not program.is_file()]
        if missing:
            raise MeasurementFailed(
                f"not there: {', '.join(map(str, missing))}; scripts/bench builds what it measures"
            )
