"""The platform's names on the bus."""

PLATFORM = "com.velmora.Tessaro"

INTERFACE = f"{PLATFORM}.ZELInterface"
LIFECYCLE = f"{PLATFORM}.ZELLifecycle"
EVENTS = f"{PLATFORM}.ZELEvents"

SERVICE = "ZelProgrammableKeys"
SETTINGS_MANAGER = "SettingsManager"

UNKNOWN_SETTING = f"{PLATFORM}.Error.UnknownSetting"


def bus_name(module: str) -> str:
    """The service name of a module."""
    return f"{PLATFORM}.{module}"


def object_path(module: str) -> str:
    """The object path of a module."""
    return f"/{PLATFORM.replace('.', '/')}/{module}"
