"""A client that writes, what becomes of its writes, and ways to cut them short."""
