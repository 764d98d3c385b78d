"""A private phone: its own bus and data, real processes, and a client without Qt.

Everything runs on one thread. A function that waits runs GLib's default main loop. Meanwhile fake
peers in Python reply, and events and replies arrive in the order in which the bus delivers them.
"""
