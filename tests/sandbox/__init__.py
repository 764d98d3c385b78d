"""A private phone: its own bus, its own data, real processes, and a client without Qt.

Everything runs on one thread. A function that waits runs GLib's default main loop, so that fake
peers in Python answer, and events and replies arrive in the order of the bus.
"""
