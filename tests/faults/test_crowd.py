"""Fifty clients at once, each of which writes rows of its own and keeps a ledger of them."""

import random
import time

import pytest

from phones import NOTHING_STORED
from writing.ledger import Ledger
from writing.user import User

CLIENTS = 50
AT_ONCE = 5
"""Calls of each client that wait for their answers together."""


@pytest.mark.sanitizers
def test_fifty_clients_at_once_are_each_answered_as_if_they_were_alone(phones, amount, figures):
    seed = amount(1, random.randrange(2**32))
    phone = phones(log_level=4)
    phone.start()
    ledgers = [Ledger(NOTHING_STORED) for _ in range(CLIENTS)]
    users = []
    for number, ledger in enumerate(ledgers):
        client, source = phone.another_client(f"Client{number}"), random.Random(seed + number)
        users.append(User(client, ledger, source, f"{number}/"))
    end = time.monotonic() + amount(3, 60)
    while time.monotonic() < end:
        for _ in range(AT_ONCE):
            for user in users:
                user.write()
        for ledger in ledgers:
            ledger.settle()
        phone.events.take_received()
    stored = {row: record for ledger in ledgers for row, record in ledger.confirmed.items()}
    assert phone.found() == stored, f"seed {seed}"
    created = [row for ledger in ledgers for row in ledger.used - NOTHING_STORED.keys()]
    assert len(set(created)) == len(created), f"an id was given twice, seed {seed}"
    for ledger in ledgers:
        ledger.assert_balanced()
        assert not ledger.in_doubt and ledger.acknowledged
    calls = sum(ledger.acknowledged for ledger in ledgers)
    figures(f"seed {seed}: {CLIENTS} clients made {calls} calls, all answered rightly")
