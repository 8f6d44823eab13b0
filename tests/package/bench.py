"""What the tests of installer and uninstaller do to a disposable Wine session, and see in it."""

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

PATIENCE = 30  # seconds until something that should happen counts as failed
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

# Of the installer and the uninstaller.
EXIT_CANCELLED = 1
EXIT_STILL_RUNNING = 3
EXIT_NOT_WRITTEN = 4
EXIT_STARTUP_FAILED = 5
EXIT_DATA_KEPT = 6


def digest(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


def is_disposable():
    return os.environ.get("MORVANE_TEST_DISPOSABLE") == "1"


def wait_until(condition, what):
    end = time.monotonic() + PATIENCE
    while not condition():
        if time.monotonic() > end:
            raise AssertionError(f"after {PATIENCE} s still not: {what}")
        time.sleep(0.1)


def wine(*arguments):
    """Runs a program and returns its exit code."""
    # A file, not a pipe: what the program starts and leaves running would keep a pipe open.
    with tempfile.TemporaryFile() as complaints:
        status = subprocess.run(["wine", *map(str, arguments)], stdin=subprocess.DEVNULL,
                                stdout=subprocess.DEVNULL, stderr=complaints, timeout=120,
                                check=False).returncode
        complaints.seek(0)
        text = complaints.read().decode(errors="replace")
    if status != 0 and text:
        print(f"{arguments} ended with {status}: {text}", file=sys.stderr)
    return status


def install(setup, *arguments):
    """Installs silently and returns the exit code. One start among hundreds was seen to end with 1
    without a word: no code of a silent installer, which has nobody to cancel it, but the one that
    Wine gives for what it cannot start. So it is started again, and what there was is told."""
    for attempt in range(1, 4):
        status = wine(setup, "/S", *arguments)
        if status != EXIT_CANCELLED:
            break
        print(f"start of the installer, attempt {attempt}: ended with {status}; there are "
              f"{files_below(INSTALLED)}, {registered()}", file=sys.stderr)
    return status


def start(*arguments):
    return subprocess.Popen(["wine", *map(str, arguments)], stdin=subprocess.DEVNULL,
                            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def wine_unquoted(program, arguments):
    """The same with arguments that reach the program without quotes, blanks or not: what follows
    /D= and _?= is taken as it stands."""
    return wine(program, *arguments.split(" "))


class Report:
    """The program that tells which windows are on top."""

    def __init__(self, build):
        self._program = build / "window_report.exe"

    def expect(self, *expectations):
        if wine(self._program, "wait", PATIENCE, *expectations) != 0:
            raise AssertionError(f"not so after {PATIENCE} s: {' '.join(expectations)}")


def registered():
    """The values of the entry in the list of installed programs; empty when there is none."""
    result = subprocess.run(["wine", "reg", "query", UNINSTALL_KEY], stdin=subprocess.DEVNULL,
                            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
    if result.returncode != 0:
        return {}
    rows = [line.split(None, 2) for line in result.stdout.decode().splitlines()
            if line.startswith("    ")]
    return {row[0]: row[2] if len(row) > 2 else "" for row in rows}


def processes():
    """The command lines, as lists, of all processes of the session, by their numbers."""
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
    """The processes that run the program, by the file that each was started from; without those
    that only carry out a switch."""
    return {number: command[0] for number, command in processes().items()
            if len(command) == 1 and command[0].lower().endswith("\\morvane.exe")}


def expect_nothing_running():
    """Waits, since a process is still to be seen for a moment after Windows counts it as ended."""
    wait_until(lambda: not running(), "no copy runs")


class Paused:
    """Stops every running copy for as long as the object is in use."""

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
    """A small file system of its own at the folder, for as long as the object is in use."""

    def __init__(self, folder, options):
        self._folder = folder
        self._options = options

    def __enter__(self):
        self._folder.mkdir(parents=True, exist_ok=True)
        subprocess.run(["mount", "-t", "tmpfs", "-o", self._options, "none", str(self._folder)],
                       check=True)

    def __exit__(self, *_):
        # Lazily: a program that just ended may still hold its file.
        subprocess.run(["umount", "-l", str(self._folder)], check=True)


def users_files():
    """Every file and folder of the users, less the folders for temporary files."""
    users = DRIVE / "users"
    return {str(path.relative_to(users)) for path in users.rglob("*")
            if "Temp" not in path.relative_to(users).parts}


def files_below(folder):
    return sorted(str(path.relative_to(folder)) for path in folder.rglob("*") if path.is_file())


def uninstall(*arguments, folder=INSTALLED):
    """Returns once the uninstaller, which goes on in a copy of itself, has come to its end."""
    status = wine(folder / "Uninstall.exe", "/S", *arguments)
    try:
        wait_until(lambda: not (folder / "Uninstall.exe").exists() and not registered(),
                   f"the uninstaller, started with status {status}, has done its work")
    except AssertionError as error:
        raise AssertionError(f"{error}; there are {files_below(folder)}, {registered()}, "
                             f"{processes()}") from error
    wait_until(lambda: not any(folder.parent.glob(folder.name)) or any(folder.iterdir()),
               "the uninstaller ends")


def uninstall_in_place(*arguments, folder=INSTALLED):
    """The uninstaller without its copy, so that its exit code can be seen; the file itself stays."""
    return wine_unquoted(folder / "Uninstall.exe",
                         " ".join(["/S", *arguments, f"_?={windows_path(folder)}"]))


def clean():
    """No program, no settings, nothing running: what a test begins and ends with."""
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
    """Whether a file system of a given size can be made, to fill it up."""
    folder = DRIVE / "mount-trial"
    folder.mkdir()
    done = subprocess.run(["mount", "-t", "tmpfs", "-o", "size=64k", "none", str(folder)],
                          stderr=subprocess.DEVNULL, check=False).returncode == 0
    if done:
        subprocess.run(["umount", str(folder)], check=True)
    folder.rmdir()
    return done
