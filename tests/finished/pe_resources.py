"""Reads the resources of a program file: icon groups, manifests and the version resource.

Nothing here judges what it finds. Truncated or malformed resources raise struct.error or ValueError.
"""

import struct
from collections import namedtuple

RT_ICON = 3
RT_GROUP_ICON = 14
RT_VERSION = 16
RT_MANIFEST = 24

# identifier is the resource's number, or its name as text.
Resource = namedtuple("Resource", "identifier language data")
IconImage = namedtuple("IconImage", "width height colours planes bits size identifier")
VersionNode = namedtuple("VersionNode", "key value children")


def resources_of_type(pe, kind):
    """All resources of one type: one item per identifier and language."""
    root = getattr(pe, "DIRECTORY_ENTRY_RESOURCE", None)
    found = []
    for type_entry in root.entries if root else []:
        if type_entry.id != kind:
            continue
        for name_entry in type_entry.directory.entries:
            identifier = name_entry.id if name_entry.name is None else str(name_entry.name)
            for language_entry in name_entry.directory.entries:
                place = language_entry.data.struct
                data = pe.get_data(place.OffsetToData, place.Size)
                found.append(Resource(identifier, language_entry.id, data))
    return found


def icon_images(group_data):
    """The images listed by an icon group; a width or height of 0 means 256."""
    _, kind, count = struct.unpack_from("<HHH", group_data)
    if kind != 1:
        raise ValueError(f"the group is of type {kind}, not 1 like an icon group")
    return [IconImage(*struct.unpack_from("<BBBxHHIH", group_data, 6 + 14 * i)) for i in range(count)]


def _aligned(position):
    return (position + 3) & ~3


def version_tree(data, start=0):
    """The version resource as a tree of nodes: key, value as bytes, list of children."""
    length, value_length, is_text = struct.unpack_from("<HHH", data, start)
    if length < 6 or start + length > len(data):
        raise ValueError(f"the block at {start} claims {length} bytes")
    end = start + length
    key_end = start + 6
    while data[key_end : key_end + 2] != b"\0\0":
        key_end += 2
        if key_end >= end:
            raise ValueError(f"the key of the block at {start} does not end")
    key = data[start + 6 : key_end].decode("utf-16-le")
    position = _aligned(key_end + 2)
    value_bytes = value_length * 2 if is_text else value_length
    value = data[position : min(position + value_bytes, end)]
    position = _aligned(position + value_bytes)
    children = []
    while position < end:
        child = version_tree(data, position)
        children.append(child)
        position = _aligned(position + struct.unpack_from("<H", data, position)[0])
    return VersionNode(key, value, children)


def child_named(node, key):
    """The only child of that name; raises ValueError unless there is exactly one."""
    found = [child for child in node.children if child.key == key]
    if len(found) != 1:
        raise ValueError(f"{node.key} holds {len(found)} blocks named {key}")
    return found[0]


def fixed_versions(root):
    """File and product version in VS_FIXEDFILEINFO, as texts such as 1.2.3.4."""
    words = struct.unpack_from("<13I", root.value)
    if words[0] != 0xFEEF04BD:
        raise ValueError("VS_FIXEDFILEINFO lacks its signature")
    parts = [(high >> 16, high & 0xFFFF, low >> 16, low & 0xFFFF)
             for high, low in (words[2:4], words[4:6])]
    return tuple(".".join(map(str, four)) for four in parts)


def string_tables(root):
    """{language and code page (such as 040904b0): {name: text}}"""
    tables = {}
    for table in child_named(root, "StringFileInfo").children:
        texts = {}
        for entry in table.children:
            text = entry.value.decode("utf-16-le")
            texts[entry.key] = text[:-1] if text.endswith("\0") else text
        tables[table.key] = texts
    return tables


def translations(root):
    """The pairs of language and code page, in file order."""
    value = child_named(child_named(root, "VarFileInfo"), "Translation").value
    return list(struct.iter_unpack("<HH", value))
