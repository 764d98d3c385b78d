"""Support for tests under an emulator."""
