"""The platform's names on the bus."""

PLATFORM = "com.velmora.Tessaro"

INTERFACE = f"{PLATFORM}.ZELInterface"
LIFECYCLE = f"{PLATFORM}.ZELLifecycle"
EVENTS = f"{PLATFORM}.ZELEvents"

SERVICE = "ZelProgrammableKeys"
SETTINGS_MANAGER = "SettingsManager"

UNKNOWN_SETTING = f"{PLATFORM}.Error.UnknownSetting"


def bus_name(module: str) -> str:
    """The service name that a module claims."""
    return f"{PLATFORM}.{module}"


def object_path(module: str) -> str:
    """The path of a module's object."""
    return f"/{PLATFORM.replace('.', '/')}/{module}"
