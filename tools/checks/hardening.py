#!/usr/bin/env python3
"""The program that is shipped is hardened, as its ELF file and the objects in it tell.

usage: hardening.py PROGRAM LIBRARIES

PROGRAM must be position-independent, with its relocations read-only after an immediate binding;
import the checks of the stack's canaries, of fortified functions and of the standard library; have
no executable stack; and carry the mark of the shadow stack. Each object of the archives in the folder LIBRARIES must carry
that mark and the one of indirect branch tracking. PROGRAM cannot have the latter where the
distribution's own start files lack it, as Debian 12's do.
"""

import struct
import sys
from pathlib import Path

ET_DYN = 3
PT_LOAD, PT_DYNAMIC, PT_NOTE = 1, 2, 4
PT_GNU_STACK, PT_GNU_RELRO = 0x6474E551, 0x6474E552
PF_X = 1
SHT_NOTE = 7
DT_STRTAB, DT_SYMTAB, DT_FLAGS, DT_FLAGS_1 = 5, 6, 30, 0x6FFFFFFB
DF_BIND_NOW, DF_1_NOW, DF_1_PIE = 8, 1, 0x08000000
NT_GNU_PROPERTY_TYPE_0 = 5
GNU_PROPERTY_X86_FEATURE_1_AND = 0xC0000002
IBT, SHSTK = 1, 2


def rounded(size, align):
    return (size + align - 1) // align * align


class Elf:
    """What of a 64-bit little-endian ELF file matters here."""

    def __init__(self, name, content):
        self.content = content
        if content[:6] != b"\x7fELF\x02\x01":
            sys.exit(f"{name}: not a 64-bit little-endian ELF file")
        self.type, = struct.unpack_from("<H", content, 16)
        # Each: type, flags, offset, address, (physical address), size in the file ...
        self.segments = self._table("<IIQQQQQQ", *self._place("<Q", 32, 54))
        # Each: name, type, flags, address, offset, size ...
        self.sections = self._table("<IIQQQQIIQQ", *self._place("<Q", 40, 58))
        self.dynamic = {}
        for _, _, offset, _, _, size, _, _ in self.of_type(PT_DYNAMIC):
            for tag, value in struct.iter_unpack("<QQ", content[offset:offset + size]):
                self.dynamic.setdefault(tag, value)

    def _place(self, form, start_at, sizes_at):
        start, = struct.unpack_from(form, self.content, start_at)
        return start, *struct.unpack_from("<HH", self.content, sizes_at)

    def _table(self, form, start, size, count):
        return [struct.unpack_from(form, self.content, start + at * size) for at in range(count)]

    def of_type(self, kind):
        return [segment for segment in self.segments if segment[0] == kind]

    def _offset(self, address):
        for _, _, offset, start, _, size, _, _ in self.of_type(PT_LOAD):
            if start <= address < start + size:
                return offset + address - start
        sys.exit(f"no segment has the address {address:#x}")

    def imports(self):
        """Names of the symbols that other files define."""
        if DT_SYMTAB not in self.dynamic:
            return set()
        names = self._offset(self.dynamic[DT_STRTAB])
        # The table of names follows the table of symbols, as every linker in use lays them.
        table = self.content[self._offset(self.dynamic[DT_SYMTAB]):names]
        table = table[:len(table) // 24 * 24]
        found = set()
        for name, _, _, section, _, _ in struct.iter_unpack("<IBBHQQ", table):
            if section == 0:
                end = self.content.index(b"\0", names + name)
                found.add(self.content[names + name:end].decode())
        return found - {""}

    def control_flow(self):
        """The bits of the x86 feature property: IBT, SHSTK."""
        notes = [(offset, size) for _, _, offset, _, _, size, _, align in self.of_type(PT_NOTE)
                 if align == 8]
        notes += [(section[4], section[5]) for section in self.sections if section[1] == SHT_NOTE]
        bits = 0
        for at, size in notes:
            end = at + size
            while at + 12 <= end:
                name_size, size_here, kind = struct.unpack_from("<III", self.content, at)
                at += 12 + rounded(name_size, 4)
                if kind == NT_GNU_PROPERTY_TYPE_0:
                    bits |= self._feature(at, at + size_here)
                at += rounded(size_here, 8)
        return bits

    def _feature(self, at, end):
        while at < end:
            kind, size = struct.unpack_from("<II", self.content, at)
            if kind == GNU_PROPERTY_X86_FEATURE_1_AND:
                return struct.unpack_from("<I", self.content, at + 8)[0]
            at += 8 + rounded(size, 8)
        return 0


def objects_of(archive):
    """Name and content of each object of an archive."""
    content = archive.read_bytes()
    at = 8  # behind "!<arch>\n"
    while at + 60 <= len(content):
        name = content[at:at + 16].decode().rstrip()
        size = int(content[at + 48:at + 58])
        if name not in ("/", "//", "/SYM64/"):  # the tables of symbols and of long names
            yield f"{archive}({name})", content[at + 60:at + 60 + size]
        at += 60 + rounded(size, 2)


def lacks_of_program(program):
    flags = program.dynamic.get(DT_FLAGS, 0)
    flags_1 = program.dynamic.get(DT_FLAGS_1, 0)
    imports = program.imports()
    stacks = program.of_type(PT_GNU_STACK)
    has = {
        "a position-independent executable": program.type == ET_DYN and flags_1 & DF_1_PIE,
        "relocations that become read-only": program.of_type(PT_GNU_RELRO),
        "immediate binding": flags & DF_BIND_NOW or flags_1 & DF_1_NOW,
        "stack canaries": "__stack_chk_fail" in imports,
        "fortified functions": imports & {"__memcpy_chk", "__snprintf_chk", "__fprintf_chk"},
        "the standard library's checks": any("__glibcxx_assert_fail" in name for name in imports),
        "a stack without execution": stacks and not stacks[0][1] & PF_X,
        "a shadow stack": program.control_flow() & SHSTK,
    }
    return [name for name, is_there in has.items() if not is_there]


def lacks_of_object(content):
    bits = Elf("an object", content).control_flow()
    return [name for name, bit in {"indirect branch tracking": IBT, "a shadow stack": SHSTK}.items()
            if not bits & bit]


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    program = sys.argv[1]
    lacks = {program: lacks_of_program(Elf(program, Path(program).read_bytes()))}
    for archive in sorted(Path(sys.argv[2]).glob("*.a")):
        for name, content in objects_of(archive):
            lacks[name] = lacks_of_object(content)
    if len(lacks) == 1:
        sys.exit(f"no archives in {sys.argv[2]}")
    problems = [f"{name}: without {lack}" for name, lacking in lacks.items() for lack in lacking]
    for problem in problems:
        print(problem)
    if problems:
        sys.exit(f"{len(problems)} wrong")
    print(f"{program} and its {len(lacks) - 1} objects are hardened")


if __name__ == "__main__":
    main()
