"""The service does not leak memory over a long time."""

import random
from pathlib import Path

import pytest

from hostile import LARGE_TEXTS
from phones import INITIAL_ROWS, Phone
from rollout import Rollout, random_rollout
from samples import CALL, MODULE_KEY, SET_KEY
from sandbox.records import Action
from sanitizing import end_cleanly, is_sanitized
from writing.ledger import Ledger
from writing.user import User

SEED = 11
WRITES = 40
"""The number of writes in a round."""
ROUNDS_BETWEEN_RESTORES = 5
LARGE_ACTION = Action(-1, "", 0, *LARGE_TEXTS, *LARGE_TEXTS, "large")
LAST_ROLLOUT = Rollout(
    [CALL._replace(dmId="D1"), CALL._replace(dmId="D2")],
    [SET_KEY._replace(dmId="D1"), MODULE_KEY._replace(dmId="D2")],
)
# The allocator returns large blocks to the system at once. Otherwise fragmentation after large
# texts would change the measured size.
MALLOC_SETTINGS = {"MALLOC_MMAP_THRESHOLD_": "65536", "MALLOC_TRIM_THRESHOLD_": "65536"}
MAX_GROWTH_KIB = 256


class Workload:
    """Typical use of a phone."""

    def __init__(self, phone: Phone) -> None:
        self._phone = phone
        self._source = random.Random(SEED)
        self.operations = 0
        self.provisioned = 0
        """The number of created provisioned rows."""

    def run(self, rounds: int) -> None:
        """Runs that many rounds. Starts with large requests and ends with the same rows."""
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
        stored = self._phone.stored_rows()
        self.provisioned += len(stored) - len(INITIAL_ROWS)
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
    """The private dirty memory of a process, including swapped memory."""
    lines = Path(f"/proc/{pid}/smaps_rollup").read_text(encoding="ascii").splitlines()[1:]
    sizes = dict(line.split(":") for line in lines)
    return sum(int(sizes[name].split()[0]) for name in ("Private_Dirty", "Swap"))


@pytest.mark.sanitizers
def test_the_memory_of_the_service_does_not_grow_with_use(phones, bin_dir, amount, summarize):
    phone = phones(log_level=6, environment=MALLOC_SETTINGS)
    phone.start()
    workload = Workload(phone)
    workload.run(amount(45, 250))
    before = private_kibibytes(phone.service.pid)
    workload.run(amount(45, 2500))
    after = private_kibibytes(phone.service.pid)
    end_cleanly(phone.service)
    done = f"{workload.operations} operations, {workload.provisioned} provisioned rows"
    summarize(f"seed {SEED}: {done}; {before} KiB before, {after} KiB after")
    # Sanitizers keep freed memory. They report leaks at the end.
    if not is_sanitized(bin_dir / "zelprogrammablekeys"):
        assert after - before < MAX_GROWTH_KIB, f"{after - before} KiB more"
