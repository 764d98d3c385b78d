"""Fifty concurrent clients, each with its own rows and its own ledger."""

import random
import time

import pytest

from phones import INITIAL_ROWS
from writing.ledger import Ledger
from writing.user import User

CLIENTS = 50
CONCURRENT_CALLS = 5
"""The number of calls that each client sends before it waits for replies."""


@pytest.mark.sanitizers
def test_fifty_concurrent_clients_get_correct_replies(phones, amount, summarize):
    seed = amount(1, random.randrange(2**32))
    phone = phones(log_level=4)
    phone.start()
    ledgers = [Ledger(INITIAL_ROWS) for _ in range(CLIENTS)]
    users = []
    for number, ledger in enumerate(ledgers):
        client, source = phone.another_client(f"Client{number}"), random.Random(seed + number)
        users.append(User(client, ledger, source, f"{number}/"))
    end = time.monotonic() + amount(3, 60)
    while time.monotonic() < end:
        for _ in range(CONCURRENT_CALLS):
            for user in users:
                user.write()
        for ledger in ledgers:
            ledger.settle()
        phone.events.take_received()
    stored = {row: record for ledger in ledgers for row, record in ledger.confirmed.items()}
    assert phone.stored_rows() == stored, f"seed {seed}"
    created = [row for ledger in ledgers for row in ledger.used - INITIAL_ROWS.keys()]
    assert len(set(created)) == len(created), f"an id was assigned twice, seed {seed}"
    for ledger in ledgers:
        ledger.assert_balanced()
        assert not ledger.in_doubt and ledger.acknowledged
    calls = sum(ledger.acknowledged for ledger in ledgers)
    summarize(f"seed {seed}: {CLIENTS} clients made {calls} calls, all with correct replies")
