"""What ends a measurement."""


class MeasurementFailed(Exception):
    """Something could not be measured; its text says what, and why."""
