"""Runs a check on each of our sources in a build folder's compile commands.

A source is checked again only if something its result depends on has changed: the file, our headers
it includes, its compile command, or whatever the check passes as common to all.
"""

import concurrent.futures
import hashlib
import json
import os
import pathlib
import subprocess

from sources import ROOT, include_closure


def own_commands(build):
    """(source, compile command) of each of our C++ files."""
    commands = json.loads((build / "compile_commands.json").read_text(encoding="utf-8"))
    for entry in commands:
        source = pathlib.Path(entry["file"])
        if source.suffix == ".cpp" and ROOT in source.parents:
            yield source, entry["command"]


def run(arguments):
    """None if the command succeeds, otherwise its output."""
    result = subprocess.run(
        arguments, cwd=ROOT, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
        stderr=subprocess.PIPE, text=True, check=False)
    if result.returncode == 0:
        return None
    return result.stdout or result.stderr


def cache_key(source, command, common):
    digest = hashlib.sha256(common)
    # Independent of where the checkout is.
    digest.update(command.replace(str(ROOT), ".").encode())
    for path in include_closure(source):
        digest.update(f"\0{path.relative_to(ROOT)}\0".encode())
        digest.update(path.read_bytes())
    return digest.hexdigest()


def check_all(name, build, common, check):
    """Runs check(source, command), which returns a report or None; returns the exit code."""
    # One empty file per clean result; a deleted source leaves a stale one, which is harmless.
    cache = ROOT / "build" / f"{name}-cache"
    cache.mkdir(parents=True, exist_ok=True)
    pending = []
    clean = 0
    for source, command in own_commands(build):
        mark = cache / cache_key(source, command, common)
        if mark.exists():
            clean += 1
        else:
            pending.append((source, command, mark))

    failed = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        reports = pool.map(lambda item: check(item[0], item[1]), pending)
        for (source, _, mark), report in zip(pending, reports):
            if report is None:
                mark.touch()
            else:
                failed += 1
                print(f"{source.relative_to(ROOT)}:\n{report}", flush=True)
    print(f"{len(pending)} checked, {clean} unchanged, {failed} with findings")
    return 1 if failed or not pending and not clean else 0
