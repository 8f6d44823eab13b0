"""Ways to spoil a copy of a program file. Each returns a function that takes a SpoiledCopy."""

import copy
import struct

import pe_resources

# Only DOS ever shows this text, so a copy can hold another text in its place.
DOS_TEXT = b"This program cannot be run in DOS mode."

FIXED_VERSION_SIGNATURE = struct.pack("<I", 0xFEEF04BD)


class SpoiledCopy:
    """The bytes to change; pe still describes the original ones."""

    def __init__(self, pe, data):
        self.pe = pe
        self.data = bytearray(data)

    def put(self, offset, data):
        if offset < 0 or offset + len(data) > len(self.data):
            raise ValueError(f"{data!r} lies outside the file")
        self.data[offset : offset + len(data)] = data

    def put_fields(self, structure, **fields):
        changed = copy.copy(structure)
        for name, value in fields.items():
            if not hasattr(structure, name):
                raise ValueError(f"there is no field {name}")
            setattr(changed, name, value)
        self.put(structure.get_file_offset(), changed.__pack__())

    def imports(self, library):
        entries = self.pe.DIRECTORY_ENTRY_IMPORT
        return next(entry for entry in entries if entry.dll.lower() == library)

    def resource_entry(self, kind):
        entries = self.pe.DIRECTORY_ENTRY_RESOURCE.entries
        return next(entry for entry in entries if entry.id == kind).directory.entries[0]

    def resource(self, kind):
        """Offset and bytes of the first resource of that type."""
        place = self.resource_entry(kind).directory.entries[0].data.struct
        offset = self.pe.get_offset_from_rva(place.OffsetToData)
        return offset, bytes(self.data[offset : offset + place.Size])


def wide(text):
    return text.encode("utf-16-le")


def file_header(**fields):
    return lambda spoiled: spoiled.put_fields(spoiled.pe.FILE_HEADER, **fields)


def optional_header(**fields):
    return lambda spoiled: spoiled.put_fields(spoiled.pe.OPTIONAL_HEADER, **fields)


def file_flag_set(bit):
    return lambda spoiled: file_header(
        Characteristics=spoiled.pe.FILE_HEADER.Characteristics | bit)(spoiled)


def dll_flag_cleared(bit):
    return lambda spoiled: optional_header(
        DllCharacteristics=spoiled.pe.OPTIONAL_HEADER.DllCharacteristics & ~bit)(spoiled)


def directory(number, **fields):
    return lambda spoiled: spoiled.put_fields(
        spoiled.pe.OPTIONAL_HEADER.DATA_DIRECTORY[number], **fields)


def code_made_writable():
    def spoil(spoiled):
        section = next(s for s in spoiled.pe.sections if s.IMAGE_SCN_MEM_EXECUTE)
        # Not through the section's fields, which are tied to flags of their own.
        offset = section.get_field_absolute_offset("Characteristics")
        spoiled.put(offset, struct.pack("<I", section.Characteristics | 0x80000000))

    return spoil


def guard_failure_changed(failure):
    """Overwrites every instruction that ends the program."""
    def spoil(spoiled):
        spoiled.data[:] = spoiled.data.replace(failure, b"\x90" * len(failure))

    return spoil


def calls_diverted(failure, call_size):
    """Makes every near call of the code that ends the program miss it by one byte."""
    def spoil(spoiled):
        code = next(s for s in spoiled.pe.sections if s.IMAGE_SCN_MEM_EXECUTE)
        begin = code.PointerToRawData
        data = code.get_data()
        for position in range(len(data) - call_size):
            if data[position] == 0xE8:
                distance = struct.unpack_from("<i", data, position + 1)[0]
                target = position + call_size + distance
                if data[target : target + len(failure)] == failure:
                    spoiled.put(begin + position + 1, struct.pack("<i", distance + 1))

    return spoil


def library_renamed(old, new):
    return lambda spoiled: spoiled.put(
        spoiled.pe.get_offset_from_rva(spoiled.imports(old).struct.Name), new)


def ansi_variant_imported(library):
    def spoil(spoiled):
        function = next(f for f in spoiled.imports(library).imports if f.name.endswith(b"W"))
        spoiled.put(function.name_offset + len(function.name) - 1, b"A")

    return spoil


def text_left_in(data):
    if len(data) > len(DOS_TEXT):
        raise ValueError(f"{data!r} is too long for its place")
    return lambda spoiled: spoiled.put(spoiled.data.index(DOS_TEXT), data)


def resource_renumbered(kind, identifier):
    return lambda spoiled: spoiled.put_fields(spoiled.resource_entry(kind).struct, Name=identifier)


def resource_byte(kind, position, value):
    return lambda spoiled: spoiled.put(spoiled.resource(kind)[0] + position, bytes([value]))


def resource_text(kind, old, new, *before):
    """Replaces old with new, of the same length, where it first follows all of before in order."""
    if len(old) != len(new):
        raise ValueError(f"{old!r} and {new!r} differ in length")

    def spoil(spoiled):
        offset, data = spoiled.resource(kind)
        position = 0
        for text in (*before, old):
            position = data.index(text, position)
        spoiled.put(offset + position, new)

    return spoil


def manifest_text(old, new):
    return resource_text(pe_resources.RT_MANIFEST, old, new)


def version_text(*texts):
    return resource_text(pe_resources.RT_VERSION, *map(wide, texts))


def fixed_version_byte(position):
    def spoil(spoiled):
        offset, data = spoiled.resource(pe_resources.RT_VERSION)
        spoiled.put(offset + data.index(FIXED_VERSION_SIGNATURE) + position, b"\xff")

    return spoil


def manifest_element_added(element):
    """Replaces the first comment of the manifest with an element."""
    def spoil(spoiled):
        offset, data = spoiled.resource(pe_resources.RT_MANIFEST)
        begin = data.index(b"<!--")
        end = data.index(b"-->", begin) + 3
        if len(element) > end - begin:
            raise ValueError("the comment is too short")
        spoiled.put(offset + begin, element.ljust(end - begin))

    return spoil
