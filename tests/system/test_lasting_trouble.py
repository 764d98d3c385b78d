"""Repeated starts while the data can neither be used nor be set aside."""

import os
from pathlib import Path

import pytest

from database import RESERVED_ACTION
from mounts import memory_file_system
from samples import CALL
from sandbox.names import SERVICE
from wrapping import wrapped

STARTS = 4


def without_root_privileges(directory: Path, bin_dir: Path) -> Path:
    """A directory of executables whose service obeys file permissions even if it runs as root."""
    if os.geteuid() != 0:
        return bin_dir
    privileges = "-dac_override,-dac_read_search"
    options = f"--bounding-set={privileges} --inh-caps={privileges}"
    return wrapped(directory, bin_dir, "setpriv", options)


@pytest.fixture
def refused(launch):
    """Starts the service repeatedly. Each start must fail for the same reason."""

    def start_repeatedly(reason: str, **options: object) -> None:
        for _ in range(STARTS):
            service = launch(**options)
            assert service.wait_for_exit() == 1
            assert reason in service.log.texts("error")[-1]

    return start_repeatedly


def names_in(directory: Path) -> list[str]:
    return sorted(path.name for path in directory.iterdir())


def test_damaged_data_that_cannot_be_set_aside_is_backed_up_once(
    refused, settings, data_root, database
):
    with memory_file_system(database.path.parent, 1 << 20):
        database.path.write_bytes(b"garbage " * 1000)
        refused("could not be moved")
        assert names_in(data_root) == [SERVICE, f"{SERVICE}.before-deploy"]


def test_intact_data_in_a_read_only_directory_is_not_changed(
    refused, start, client, bin_dir, data_root, database, tmp_path
):
    first = start()
    stored = CALL._replace(idAction=client.add_action(CALL))
    first.stop()
    database.path.parent.chmod(0o555)
    refused("cannot be written", bin_dir=without_root_privileges(tmp_path / "bin", bin_dir))
    assert names_in(data_root) == [SERVICE]
    database.path.parent.chmod(0o755)
    start()
    assert client.get_all_actions() == [RESERVED_ACTION, stored]
