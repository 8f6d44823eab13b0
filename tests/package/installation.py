"""Installs, uninstalls and inspects the program in a disposable Wine session."""

import functools
import getpass
import hashlib
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "packaging"))

PATIENCE = 30  # seconds to wait before giving up
MAX_REPEATS_PER_START = 2
MAX_REPEATS_PER_RUN = 3
UNINSTALL_KEY = r"HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\Morvane"

PROFILE = pathlib.Path(os.environ.get("WINEPREFIX", "/nonexistent"))
DRIVE = PROFILE / "drive_c"
APP_DATA = DRIVE / "users" / getpass.getuser() / "AppData"
PROGRAMS = APP_DATA / "Local" / "Programs"
INSTALLED = PROGRAMS / "Morvane"
SETTINGS = APP_DATA / "Roaming" / "Morvane" / "config.txt"
START_MENU = APP_DATA / "Roaming" / "Microsoft" / "Windows" / "Start Menu" / "Programs"
START_MENU_ENTRY = START_MENU / "Morvane.lnk"
STARTUP_SHORTCUT = START_MENU / "StartUp" / "Morvane.lnk"

# Exit codes of the installer and the uninstaller.
EXIT_CANCELLED = 1
EXIT_STILL_RUNNING = 3
EXIT_NOT_WRITTEN = 4
EXIT_STARTUP_FAILED = 5
EXIT_DATA_KEPT = 6
EXIT_SERVICE_ACCOUNT = 7
EXIT_OLD_WINDOWS = 8

repeated_starts = []


def digest(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


def is_disposable():
    return os.environ.get("MORVANE_TEST_DISPOSABLE") == "1"


def wait_until(condition, what):
    end = time.monotonic() + PATIENCE
    while not condition():
        if time.monotonic() > end:
            raise AssertionError(f"after {PATIENCE} s, still waiting until {what}")
        time.sleep(0.1)


def wine(*arguments):
    """Runs a program and returns its exit code."""
    # A file, not a pipe: programs it leaves running would keep a pipe open.
    with tempfile.TemporaryFile() as complaints:
        status = subprocess.run(["wine", *map(str, arguments)], stdin=subprocess.DEVNULL,
                                stdout=subprocess.DEVNULL, stderr=complaints, timeout=120,
                                check=False).returncode
        complaints.seek(0)
        text = complaints.read().decode(errors="replace")
    if status != 0 and text:
        print(f"{arguments} ended with {status}: {text}", file=sys.stderr)
    return status


def state():
    """What installers and uninstallers change."""
    return files_below(INSTALLED), registered(), running()


def run_until_begun(attempt, has_begun, what):
    """Repeats an attempt of which nothing has begun, and shows that as a figure of the run.

    One start in hundreds has been seen to fail: under load Wine 8.0 creates no process."""
    for repeat in range(MAX_REPEATS_PER_START + 1):
        result = attempt()
        if has_begun(result) or repeat == MAX_REPEATS_PER_START:
            break
        repeated_starts.append(what)
        print(f"measured: start of {what} repeated, as it returned {result}: "
              f"repeat {len(repeated_starts)} of this run", flush=True)
        if len(repeated_starts) > MAX_REPEATS_PER_RUN:
            raise AssertionError(f"too many starts had to be repeated: {repeated_starts}")
    return result


def run_silently(program, *arguments):
    """Runs an installer or uninstaller and returns the exit code. A silent one never exits with 1,
    as nobody can cancel it, but Wine does when it cannot start a program."""
    before = state()
    return run_until_begun(lambda: wine(program, "/S", *arguments),
                           lambda status: status != EXIT_CANCELLED or state() != before,
                           program.name)


def start(*arguments):
    return subprocess.Popen(["wine", *map(str, arguments)], stdin=subprocess.DEVNULL,
                            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def wine_unquoted(program, arguments):
    """Runs a program with its arguments unquoted, as /D= and _?= need: they take the rest of the
    command line literally."""
    return wine(program, *arguments.split(" "))


class WindowReport:
    """Runs window_report, which checks the state of windows."""

    def __init__(self, build):
        self._program = build / "window_report.exe"

    def expect(self, *expectations):
        if wine(self._program, "wait", PATIENCE, *expectations) != 0:
            raise AssertionError(f"does not hold after {PATIENCE} s: {' '.join(expectations)}")


def registered():
    """The values of the entry in the list of installed programs; empty if there is no entry."""
    result = subprocess.run(["wine", "reg", "query", UNINSTALL_KEY], stdin=subprocess.DEVNULL,
                            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
    if result.returncode != 0:
        return {}
    rows = [line.split(None, 2) for line in result.stdout.decode(errors="replace").splitlines()
            if line.startswith("    ")]
    return {row[0]: row[2] if len(row) > 2 else "" for row in rows}


def processes():
    """All processes of the session: {process ID: command line as a list}."""
    found = {}
    for process in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            if f"WINEPREFIX={PROFILE}".encode() in (process / "environ").read_bytes().split(b"\0"):
                found[int(process.name)] = [
                    word for word in (process / "cmdline").read_bytes().decode().split("\0") if word]
        except (OSError, UnicodeDecodeError):
            continue
    return found


def running():
    """The running copies: {process ID: program file}. Ignores processes that only handle a
    command-line switch."""
    return {number: command[0] for number, command in processes().items()
            if len(command) == 1 and command[0].lower().endswith("\\morvane.exe")}


def expect_nothing_running():
    """Waits, as a process stays visible for a moment after it has ended for Windows."""
    wait_until(lambda: not running(), "no copy runs")


class Paused:
    """Context manager that suspends every running copy."""

    def __enter__(self):
        self._processes = list(running())
        for process in self._processes:
            os.kill(process, signal.SIGSTOP)

    def __exit__(self, *_):
        for process in self._processes:
            os.kill(process, signal.SIGCONT)


def windows_path(path):
    return "C:\\" + str(path.relative_to(DRIVE)).replace("/", "\\")


class Mounted:
    """Context manager that mounts a small file system at the folder."""

    def __init__(self, folder, options):
        self._folder = folder
        self._options = options

    def __enter__(self):
        self._folder.mkdir(parents=True, exist_ok=True)
        subprocess.run(["mount", "-t", "tmpfs", "-o", self._options, "none", str(self._folder)],
                       check=True)

    def __exit__(self, *_):
        # Lazily, as a program that just ended may still hold its file.
        subprocess.run(["umount", "-l", str(self._folder)], check=True)


def users_files():
    """Every file and folder of the users, except temporary ones."""
    users = DRIVE / "users"
    return {str(path.relative_to(users)) for path in users.rglob("*")
            if "Temp" not in path.relative_to(users).parts}


def files_below(folder):
    return sorted(str(path.relative_to(folder)) for path in folder.rglob("*") if path.is_file())


def uninstall(*arguments, folder=INSTALLED):
    """Waits for the uninstaller, which continues in a copy of itself, to finish."""
    status = run_silently(folder / "Uninstall.exe", *arguments)
    try:
        wait_until(lambda: not (folder / "Uninstall.exe").exists() and not registered(),
                   f"the uninstaller, whose start returned {status}, has removed everything")
    except AssertionError as error:
        raise AssertionError(f"{error}; files: {files_below(folder)}, registry: {registered()}, "
                             f"processes: {processes()}") from error
    wait_until(lambda: not any(folder.parent.glob(folder.name)) or any(folder.iterdir()),
               "the uninstaller ends")


def uninstall_in_place(*arguments, folder=INSTALLED):
    """Runs the uninstaller without its copy, so that the exit code is known."""
    return wine_unquoted(folder / "Uninstall.exe",
                         " ".join(["/S", *arguments, f"_?={windows_path(folder)}"]))


class RegistryValue:
    """Context manager that sets a text value and puts back what was there."""

    def __init__(self, key, name, text):
        self._value = [key, "/v", name]
        self._text = text

    def _set(self, text):
        wine("reg", "add", *self._value, "/t", "REG_EXPAND_SZ", "/d", text, "/f")

    def __enter__(self):
        found = subprocess.run(["wine", "reg", "query", *self._value], stdin=subprocess.DEVNULL,
                               stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
        rest = found.stdout.decode().partition("_SZ")[2]
        self._before = rest.strip() if found.returncode == 0 else None
        self._set(self._text)

    def __exit__(self, *_):
        if self._before is None:
            wine("reg", "delete", *self._value, "/f")
        else:
            self._set(self._before)


def clean():
    """Kills every copy and removes all traces of the program."""
    for process in running():
        os.kill(process, signal.SIGKILL)
    expect_nothing_running()
    for folder in (INSTALLED, SETTINGS.parent):
        shutil.rmtree(folder, ignore_errors=True)
    for entry in (START_MENU_ENTRY, STARTUP_SHORTCUT):
        entry.unlink(missing_ok=True)
    wine("reg", "delete", UNINSTALL_KEY, "/f")


@functools.cache
def can_mount():
    """Whether a file system of limited size can be mounted here."""
    folder = DRIVE / "mount-trial"
    folder.mkdir()
    done = subprocess.run(["mount", "-t", "tmpfs", "-o", "size=64k", "none", str(folder)],
                          stderr=subprocess.DEVNULL, check=False).returncode == 0
    if done:
        subprocess.run(["umount", str(folder)], check=True)
    folder.rmdir()
    return done
