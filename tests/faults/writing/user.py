"""A client that sends random writes as fast as possible."""

import os
import random
import time
from typing import Callable

from phones import pause
from sandbox.client import Client
from sandbox.records import Action, Key
from writing import writes
from writing.ledger import Ledger
from writing.writes import Write

SEED_VARIABLE = "PROGKEYS_TEST_SEED"
SEED = int(os.environ.get(SEED_VARIABLE) or 20240531)

MAX_ROWS = 160
"""At this number of rows, the user only deletes rows."""

MOST_IN_FLIGHT = 60
LENGTHS = (0, 0, 5, 5, 40, 40, 400, 6000)
"""The lengths of texts. The longest text needs overflow pages."""


class User:
    """Changes rows of its ledger without waiting for replies.

    All texts of a record contain the same unique number. A test can thus detect confused records,
    and records with old and new fields. The name distinguishes users.
    """

    def __init__(
        self, client: Client, ledger: Ledger, source: random.Random, name: str = ""
    ) -> None:
        self._name = name
        self._client = client
        self._ledger = ledger
        self._source = source
        self._number = 0
        self.provisioned_actions: list[int] = []
        """The provisioned actions that keys can have."""

    # Many writes

    def write(self) -> None:
        self._ledger.send(self._client, self._next())

    def write_all(self, count: int) -> float:
        """Sends that many writes and waits for the replies. Returns the time in seconds."""
        begin = time.monotonic()
        for _ in range(count):
            self.write()
        self._ledger.settle()
        return time.monotonic() - begin

    def write_until(self, moment: float, count: int) -> None:
        """Sends up to that many writes and returns at the given time."""
        for _ in range(count):
            if time.monotonic() >= moment:
                return
            self.write()
        self._client.connection.flush()
        pause(max(0.0, moment - time.monotonic()))

    # One write

    def _next(self) -> Write:
        kinds: dict[Callable[[], Write], int] = {self._delete_key: 3, self._delete_action: 1}
        if len(self._ledger.expected) < MAX_ROWS:
            kinds |= {self._add_action: 3, self._create_key: 5}
            kinds |= {self._modify_action: 3, self._modify_key: 3, self._move_keys: 3}
        (make,) = self._source.choices(list(kinds), list(kinds.values()))
        return make()

    def _add_action(self) -> Write:
        return writes.add_action(self._any_action(-1))

    def _create_key(self) -> Write:
        return writes.create_key(self._any_key(-1))

    def _modify_action(self) -> Write:
        numbers = self._numbers(Action)
        if not numbers:
            return self._add_action()
        return writes.modify_action(self._any_action(self._source.choice(numbers)))

    def _modify_key(self) -> Write:
        numbers = self._numbers(Key)
        if not numbers:
            return self._create_key()
        return writes.modify_key(self._any_key(self._source.choice(numbers)))

    def _move_keys(self) -> Write:
        numbers = self._numbers(Key)
        if not numbers:
            return self._create_key()
        moved = self._source.sample(numbers, self._source.randint(1, min(6, len(numbers))))
        positions = {number: self._source.randrange(1000) for number in moved}
        return writes.move_keys([self._ledger.expected[Key, number] for number in moved], positions)

    def _delete_key(self) -> Write:
        numbers = self._numbers(Key)
        if not numbers:
            return self._create_key()
        return writes.delete_key(self._source.choice(numbers))

    def _delete_action(self) -> Write:
        keys = [row for row in self._ledger.expected.values() if isinstance(row, Key)]
        in_creation = {key.idAction for key in keys if key.idKey < 0}
        numbers = [number for number in self._numbers(Action) if number not in in_creation]
        if not numbers:
            return self._add_action()
        number = self._source.choice(numbers)
        return writes.delete_action(number, [key.idKey for key in keys if key.idAction == number])

    def _numbers(self, kind: type) -> list[int]:
        """The known ids. Rows without a reply to their creation have no id yet."""
        rows = self._ledger.expected
        return [number for row_kind, number in rows if row_kind is kind and number > 0]

    # Records

    def _text(self) -> str:
        return f"{self._name}{self._number}." + "x" * self._source.choice(LENGTHS)

    def _any_action(self, number: int) -> Action:
        self._number += 1
        texts = (self._text() for _ in range(5))
        return Action(number, "", self._number, *texts)

    def _any_key(self, number: int) -> Key:
        self._number += 1
        bound_to = self._source.choice([-1, *self._numbers(Action), *self.provisioned_actions])
        place = (self._source.randrange(100), self._text(), self._source.randrange(2))
        return Key(number, "", bound_to, self._text(), *place, self._number, self._number)
