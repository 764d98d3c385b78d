"""The names of what can be measured."""

TMPFS = "tmpfs"
DISK = "disk"
MEMORY = "memory"
START = "start"
PROVISIONED_START = "provisioned-start"
SYNCHRONISATION = "synchronisation"
CORES = "cores"
CALLERS = "callers"
QT6 = "qt6"
GROWTH = "growth"

RIVAL = (TMPFS, DISK)
OWN = (MEMORY, START, PROVISIONED_START, SYNCHRONISATION)
REPORTED = (CORES, CALLERS, QT6, GROWTH)
SECTIONS = (*RIVAL, *OWN, *REPORTED)

GROUPS = {"rival": RIVAL, "own": OWN, "limits": RIVAL + OWN, "reported": REPORTED}
