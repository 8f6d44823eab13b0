"""Reads from the linker's map which members of which libraries became part of the program."""

import re

_MEMBER = re.compile(r"^(?:.*/)?(lib\S+\.a)\((?:lib64_\w+_a-)?([^()\s]+)\)(?:\s|$)", re.MULTILINE)


def linked_members(text):
    """Pairs of a library's and a member's file name."""
    listed, _, rest = text.partition("\nDiscarded input sections\n")
    return _MEMBER.findall(listed) if rest else []
