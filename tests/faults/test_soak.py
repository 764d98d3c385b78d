"""The service in use for a long time leaks nothing and takes no more memory."""

import random
from pathlib import Path

import pytest

from hostile import LARGE_TEXTS
from phones import NOTHING_STORED, Phone
from rollout import Rollout, random_rollout
from samples import CALL, MODULE_KEY, SET_KEY
from sandbox.records import Action
from sanitizing import end_cleanly, is_sanitized
from writing.ledger import Ledger
from writing.user import User

SEED = 11
WRITES = 40
"""In a round."""
ROUNDS_BETWEEN_RESTORES = 5
LARGE_ACTION = Action(-1, "", 0, *LARGE_TEXTS, *LARGE_TEXTS, "large")
LAST_ROLLOUT = Rollout(
    [CALL._replace(dmId="D1"), CALL._replace(dmId="D2")],
    [SET_KEY._replace(dmId="D1"), MODULE_KEY._replace(dmId="D2")],
)
# Large pieces of memory go back at once, so that what is measured is what is kept and not the gaps
# that the largest texts have left.
GIVE_MEMORY_BACK = {"MALLOC_MMAP_THRESHOLD_": "65536", "MALLOC_TRIM_THRESHOLD_": "65536"}
MOST_GROWTH_KIB = 256


class Use:
    """The everyday use of a phone."""

    def __init__(self, phone: Phone) -> None:
        self._phone = phone
        self._source = random.Random(SEED)
        self.operations = 0
        self.provisioned = 0
        """Provisioned rows that were created."""

    def go_on(self, rounds: int) -> None:
        """Begins with large requests and ends with the same rows each time."""
        self._phone.client.add_action(LARGE_ACTION)
        self._phone.client.get_all_actions()
        for number in range(rounds):
            if number % ROUNDS_BETWEEN_RESTORES == 0:
                self._restore(random_rollout(self._source))
            self._user.write_all(WRITES)
            self._read_and_press()
            self.operations += 2 * WRITES
        self._restore(LAST_ROLLOUT)

    def _restore(self, rollout: Rollout) -> None:
        self._phone.settings.values.update(rollout.settings)
        self._phone.client.restore_default()
        stored = self._phone.found()
        self.provisioned += len(stored) - len(NOTHING_STORED)
        self._user = User(self._phone.client, Ledger(stored), self._source)

    def _read_and_press(self) -> None:
        client = self._phone.client
        for number in range(WRITES // 4):
            client.send_event("AOM_KEY_PRESS_EVENT", aom_key_num=number, aom_type=1, addr=number)
            client.get_programmable_key(number)
            client.set_icon_state_for_key(number, 1, 1)
            client.get_programmable_keys_by_container("main")
        client.round_trip()
        self._phone.events.take_received()
        self._phone.settings.calls.clear()


def private_kibibytes(pid: int) -> int:
    """The memory that a process has written to and shares with no other, swapped out or not."""
    lines = Path(f"/proc/{pid}/smaps_rollup").read_text(encoding="ascii").splitlines()[1:]
    sizes = dict(line.split(":") for line in lines)
    return sum(int(sizes[name].split()[0]) for name in ("Private_Dirty", "Swap"))


@pytest.mark.sanitizers
def test_a_service_in_long_use_leaks_nothing_and_takes_no_more_memory(
    phones, bin_dir, amount, figures
):
    phone = phones(log_level=6, environment=GIVE_MEMORY_BACK)
    phone.start()
    use = Use(phone)
    use.go_on(amount(45, 250))
    before = private_kibibytes(phone.service.pid)
    use.go_on(amount(45, 2500))
    after = private_kibibytes(phone.service.pid)
    end_cleanly(phone.service)
    done = f"{use.operations} operations, {use.provisioned} rows provisioned"
    figures(f"seed {SEED}: {done}; {before} KiB at first, {after} KiB at the end; a clean end")
    # Sanitizers keep what is freed; at the end they report leaks.
    if not is_sanitized(bin_dir / "zelprogrammablekeys"):
        assert after - before < MOST_GROWTH_KIB, f"{after - before} KiB more"
