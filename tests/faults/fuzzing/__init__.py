"""Calls and events at random, right and wrong, and what must come of them."""
