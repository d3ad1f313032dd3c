#!/usr/bin/env python3
"""Writes a launcher that is a shell script and a PE32+ file at once: make-launcher.py OUT PROGRAM [LIBRARY...]

Its first line, which fills the DOS header up to the offset of the NT header, runs PROGRAM from the launcher's own
directory. Its import table names PROGRAM and the libraries. Layout of the headers: Microsoft, "PE Format".
"""
import struct
import sys
from pathlib import Path

SECTION_RVA = 0x1000
SECTION_OFFSET = 0x200


def import_section(modules):
    """Descriptors of 20 bytes, ended by an empty one, then the names."""
    names_at = 20 * (len(modules) + 1)
    descriptors, names = b"", b""
    for module in modules:
        name_rva = SECTION_RVA + names_at + len(names)
        descriptors += struct.pack("<5I", 0, 0, 0, name_rva, name_rva)  # a first thunk of 0 would end the table
        names += module.encode() + b"\0"
    return descriptors + bytes(20) + names


def launcher(modules):
    script = f'MZ=1;exec "${{0%/*}}/{modules[0]}" "$@"\n'.encode()
    if len(script) > 60:
        raise SystemExit(f"make-launcher: the name {modules[0]} is too long")
    dos = script.ljust(60, b"#") + struct.pack("<I", 64)
    section = import_section(modules)
    file_header = struct.pack("<2H3I2H", 0x8664, 1, 0, 0, 0, 240, 0x22)
    optional = struct.pack("<H2B5IQ2I6H4I2H4Q2I", 0x20B, 0, 0, 0, len(section), 0, 0, SECTION_RVA, 0x140000000, 0x1000,
                           0x200, 6, 0, 0, 0, 6, 0, 0, 0x2000, SECTION_OFFSET, 0, 3, 0, 0x100000, 0x1000, 0x100000,
                           0x1000, 0, 16)
    directories = [(0, 0)] * 16
    directories[1] = (SECTION_RVA, 20 * (len(modules) + 1))
    optional += b"".join(struct.pack("<2I", *entry) for entry in directories)
    raw = len(section) + -len(section) % 0x200
    table = struct.pack("<8s6I2HI", b".idata", len(section), SECTION_RVA, raw, SECTION_OFFSET, 0, 0, 0, 0, 0x40000040)
    head = dos + b"PE\0\0" + file_header + optional + table
    return head.ljust(SECTION_OFFSET, b"\0") + section.ljust(raw, b"\0")


if __name__ == "__main__":
    out = Path(sys.argv[1])
    out.write_bytes(launcher(sys.argv[2:]))
    out.chmod(0o755)
