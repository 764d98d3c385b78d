"""The servers that are measured, each started the same way."""

import os
import signal
from pathlib import Path
from typing import NamedTuple

from sandbox.names import SERVICE
from sandbox.processes import Module, clean_environment

BENCH = Path(__file__).resolve().parents[1]

REFERENCE = "service"
SERVERS = (REFERENCE, "rival", "afternoon")
OTHERS = SERVERS[1:]

PRESS = "press"
"""Does nothing but answer presses of keys that there are."""

QUIET = "3"
"""The log level at which the service is measured: errors."""


class Place(NamedTuple):
    """Where a server runs: its bus, its data, its log."""

    address: str
    data_root: Path
    log_path: Path


def executable(server: str, bin_dir: Path) -> Path:
    """The program of a server; fails if it was not built."""
    programs = {
        "service": bin_dir / "zelprogrammablekeys",
        "rival": bin_dir.parent / "bench" / "bench_rival",
        "afternoon": BENCH / "afternoon" / "afternoon.py",
        PRESS: bin_dir.parent / "bench" / "bench_press",
    }
    program = programs[server]
    assert os.access(program, os.X_OK), f"there is no {program.name} in {program.parent}"
    return program


def start_server(server: str, bin_dir: Path, place: Place) -> Module:
    """Starts a server; who calls waits for its name."""
    place.data_root.mkdir(parents=True, exist_ok=True)
    environment = clean_environment()
    environment.update(
        DBUS_SYSTEM_BUS_ADDRESS=place.address,
        ZEL_DATA_ROOT=f"{place.data_root}{os.sep}",
        ZEL_LOG_LEVEL=QUIET,
    )
    return Module(SERVICE, [str(executable(server, bin_dir))], environment, place.log_path)


def end_server(module: Module) -> None:
    """Ends a server by the signal that ends each of them, and holds it to having lived until then."""
    assert module.running, f"{module} has ended by itself; its log:\n{module.log.raw()}"
    module.send_signal(signal.SIGTERM)
    status = module.wait_for_exit()
    assert status in (0, -signal.SIGTERM), f"{module} ended with status {status}"
