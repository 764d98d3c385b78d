"""The limits, by measurement and row. The median of all rounds must not exceed the limit."""

LIMITS: dict[str, dict[str, float]] = {
    # Time of a call, service over rival, data in memory.
    "calls": {
        "get-action": 1.7,
        "get-key": 1.7,
        "get-all-keys": 1.8,
        "press": 1.8,
        "modify-action": 1.7,
        "create-key": 1.6,
    },
    # The same, data on a disk.
    "disk": {
        "modify-action": 0.7,
        "create-key": 0.7,
    },
    # Milliseconds until the server owns its name, service minus frame.
    "start": {
        "100 stored keys": 25.0,
    },
    # The same time, data on a disk over data in memory.
    "provisioned-start": {
        "60 provisioned keys": 1.5,
        "1,000 provisioned keys": 1.5,
    },
    # Time of the merge of provisioned keys at a start, 1,000 keys over 100 keys.
    "growth": {
        "module keys": 13.0,
        "set keys": 13.0,
    },
    # MiB: service minus frame, and service with 1,000 stored keys minus service with one.
    "memory": {
        "idle": 1.5,
        "stored keys": 0.5,
    },
}
