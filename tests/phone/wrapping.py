"""Running the service under another program, such as strace."""

from pathlib import Path


def wrapped(directory: Path, bin_dir: Path, *command: str) -> Path:
    """A directory of executables whose service runs under this command."""
    directory.mkdir()
    script = directory / "zelprogrammablekeys"
    script.write_text(
        "#!/bin/sh\n"
        # LeakSanitizer does not work under strace.
        "export ASAN_OPTIONS=detect_leaks=0\n"
        f"exec {' '.join(command)} {bin_dir}/zelprogrammablekeys\n"
    )
    script.chmod(0o755)
    return directory


def without_lock_wait(directory: Path, bin_dir: Path) -> Path:
    """Executables whose service does not sleep while it waits for a lock, so it gives up at once."""
    sleeps = "clock_nanosleep,nanosleep"
    options = f"-e trace={sleeps} -e inject={sleeps}:retval=0"
    return wrapped(directory, bin_dir, "strace", "-D", "-f", "-o", "/dev/null", options)
