"""A client that writes, a ledger of its writes, and tools that interrupt writes."""
