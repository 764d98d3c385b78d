"""A private phone on a laptop: its own bus, its own data, real processes, a client that is not Qt.

Everything runs on the caller's one thread. Whoever waits turns GLib's default main loop meanwhile,
so that peers played in Python answer, events are recorded and replies arrive, all in the order in
which the bus carried them.
"""
