"""A client that writes, a ledger of its writes, and ways to cut them short."""
