"""Peers that hang, crash, send nonsense, never read or come in crowds."""
