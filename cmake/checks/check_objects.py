#!/usr/bin/env python3
"""Checks that no object file of the library holds an instruction above its level, and that per-set files share nothing.

A processor faults at the first instruction that it lacks, so the base objects keep to the baseline of their target
(32 bits: i686 without MMX and SSE; 64 bits: SSE2), and a file named after an instruction set keeps to that set. An
inline function that a per-set file shared with baseline code would be kept once by the linker, maybe in its wide form:
so a per-set object defines no weak symbol and no COMDAT section. No object has a dynamic initialiser: it could run
after the constructor that fills the tables.

64-bit Windows aligns the stack to 16 bytes, and GCC cannot align it further there: with --unaligned-stack no move of a
wider register takes memory for aligned.

The same is asked of a linked DLL, where the linker's map tells which object each piece of code came from: that
includes what the compiler's own libraries added, which has to be baseline code.

usage: check_objects.py --bits 32|64 [--unaligned-stack] --objdump PROGRAM --nm PROGRAM LIST
       LIST: a file with one object path a line
       check_objects.py --bits 32|64 [--unaligned-stack] --objdump PROGRAM --linked DLL MAP [--self-test]
       check_objects.py --self-test --assembler PROGRAM --objdump PROGRAM --nm PROGRAM
"""
import argparse
import os
import re
import sys
import tempfile

import reporting
from reporting import run

# The one list of exceptions: source file's stem -> (instructions allowed there, why).
EXCEPTIONS = {
    "attach_win32": ({"xorps"}, "asks whether SSE registers work by using one, under a handler for the fault"),
    "cpu": ({"xgetbv"}, "executed only where CPUID reports that the system enabled it"),
}

# Instruction sets in rising order. A level includes all before it, as far as a target has it.
BASE, MMX, MMXEXT, SSE, SSE2, AVX2, AVX512, ABOVE = range(8)
NAMES = ["base", "MMX", "MMX extensions", "SSE", "SSE2", "AVX2", "AVX-512", "a set that no file is built for"]
LEVEL_OF_FILE = {"mmx": MMX, "mmxext": MMXEXT, "sse2": SSE2, "avx2": AVX2, "avx512": AVX512}

MMX_INSTRUCTIONS = set(
    """emms movd movq packssdw packsswb packuswb paddb paddd paddsb paddsw paddusb paddusw paddw pand pandn pcmpeqb
    pcmpeqd pcmpeqw pcmpgtb pcmpgtd pcmpgtw pmaddwd pmulhw pmullw por pslld psllq psllw psrad psraw psrld psrlq psrlw
    psubb psubd psubsb psubsw psubusb psubusw psubw punpckhbw punpckhdq punpckhwd punpcklbw punpckldq punpcklwd
    pxor""".split())
MMXEXT_INSTRUCTIONS = set(
    """maskmovq movntq pavgb pavgw pextrw pinsrw pmaxsw pmaxub pminsw pminub pmovmskb pmulhuw psadbw pshufw""".split())
# Instructions that name no vector register.
BARE_LEVEL = {"emms": MMX, "sfence": MMXEXT, "prefetchnta": MMXEXT, "prefetcht0": MMXEXT, "prefetcht1": MMXEXT,
              "prefetcht2": MMXEXT, "ldmxcsr": SSE, "stmxcsr": SSE, "fxsave": SSE, "fxrstor": SSE, "lfence": SSE2,
              "mfence": SSE2, "movnti": SSE2, "clflush": SSE2, "vzeroupper": AVX2, "vzeroall": AVX2}
SSE_ONLY = re.compile(
    r"^(mov[ahlu]?[hl]?ps|movss|"
    r"(add|sub|mul|div|sqrt|min|max|and|andn|or|xor|rsqrt|rcp|cmp\w*|shuf|unpck[hl]|movmsk|movnt|movlh|movhl|u?comi)"
    r"(ps|ss)?|cvt(t?[ps]s2[ps]?i|[ps]i2[ps]s)l?)$")
# Not among them: tzcnt, which compilers write for the bsf of a value that is not 0; older processors run it as bsf.
ABOVE_ALWAYS = re.compile(
    r"^(addsub\w+|h(add|sub)p[sd]|lddqu|movddup|movs[hl]dup|fisttp\w*|monitor|mwait|"                     # SSE3
    r"pshufb|ph(add|sub)\w+|pmaddubsw|psign.|pmulhrsw|palignr|pabs.|"                                      # SSSE3
    r"p?blend\w+|dpp[sd]|extractps|insertps|movntdqa|mpsadbw|packusdw|pcmpeqq|pextr[bdq]|phminposuw|"      # SSE4.1
    r"pinsr[bdq]|p(max|min)(sb|sd|ud|uw)|pmov[sz]x\w+|pmuldq|pmulld|ptest|round[ps][sd]|"
    r"pcmpgtq|pcmp[ei]str\w|crc32\w?|popcnt\w?|"                                                           # SSE4.2
    r"lzcnt\w?|andn[lq]?|bextr\w?|bls(i|r|msk)\w?|bzhi\w?|pdep\w?|pext\w?|mulx\w?|rorx\w?|s(ar|hl|hr)x\w?|"  # BMI
    r"aes\w+|pclmul\w+|sha(1|256)\w+|movbe\w?|ad[co]x\w?|rd(rand|seed)\w?|x(get|set)bv|xsave\w*|xrstor\w*|"
    r"prefetchw\w*|clflushopt|clwb|cmpxchg16b|"
    r"vf?n?m(add|sub)\w+|vcvtph2ps|vcvtps2ph|"                                                             # FMA, F16C
    r"vpdp\w+|vpmadd52\w+|vpermi?t?2?b|vpmultishiftqb)$")  # AVX-512 VNNI, IFMA, VBMI
# Begin with v and are no vector instructions.
SYSTEM_V = re.compile(
    r"^(ver[rw]|vm(call|clear|func|launch|mcall|ptrld|ptrst|read|resume|write|xoff|xon|load|save|run))$")
INSTRUCTION = re.compile(r"^\s*[0-9a-f]+:\t((?:[0-9a-f]{2} )+)\s*\t(.*)$")
PREFIX_WORDS = {"rep", "repz", "repnz", "repe", "repne", "lock", "data16", "addr32", "addr16", "notrack", "bnd",
                "cs", "ds", "es", "fs", "gs", "ss", "{vex}", "{vex3}", "{evex}"}


# The one operand in memory is an address, as (%rsp) or 64(%rsp,%rax,4).
ALIGNED_WIDE_MOVE = re.compile(r"^(?:\{\w+\} )?vmov(?:ap[sd]|dqa|dqa32|dqa64)\s(?=.*\().*%[yz]mm")


def level_of(code, text, bits):
    """The lowest set that has an instruction, given as its bytes and as objdump's AT&T text."""
    words = text.split()
    while words and (words[0] in PREFIX_WORDS or words[0].startswith("rex")):
        words.pop(0)
    if not words:
        return "", BASE
    name = words[0]
    operands = " ".join(words[1:])
    if name == "(bad)":
        return name, ABOVE
    if name == "andn" or ABOVE_ALWAYS.match(name):
        # SSE's andn carries a suffix (andnps); the bare name is a bit-manipulation instruction.
        return name, ABOVE
    if re.search(r"%zmm|%k[0-7]\b|%[xy]mm(1[6-9]|2\d|3[01])\b", operands):
        return name, AVX512
    if name.startswith("v") and not SYSTEM_V.match(name):
        return name, AVX512 if code[0] == 0x62 else AVX2
    if "%ymm" in operands:
        return name, AVX2
    if name in BARE_LEVEL:
        return name, BARE_LEVEL[name]
    if "%xmm" in operands or name.startswith("cvt"):
        return name, SSE if SSE_ONLY.match(name) else SSE2
    if re.search(r"%mm[0-7]\b", operands):
        if name in MMX_INSTRUCTIONS:
            return name, MMX
        return name, MMXEXT if name in MMXEXT_INSTRUCTIONS else SSE2
    return name, BASE


def is_per_set(stem):
    return stem.rsplit("_", 1)[-1] in LEVEL_OF_FILE


def allowed_in(stem, bits):
    """The level that a source file may hold, and the instructions above it that are named exceptions."""
    level = LEVEL_OF_FILE.get(stem.rsplit("_", 1)[-1], BASE)
    return max(level, SSE2) if bits == 64 else level, EXCEPTIONS.get(stem, (set(), ""))[0]


def check_object(path, bits, unaligned_stack, objdump, nm):
    """Findings of one object, as lines of text, and how many instructions were looked at."""
    stem = os.path.basename(path).split(".")[0]
    per_set = is_per_set(stem)
    allowed, extra = allowed_in(stem, bits)

    findings = {}
    count = 0
    function = "?"
    for line in run(objdump, "-d", "-w", "-M", "att", path).splitlines():
        match = INSTRUCTION.match(line)
        if not match:
            if line.endswith(">:"):
                function = line[line.index("<") + 1:-2]
            continue
        count += 1
        name, level = level_of(bytes.fromhex(match.group(1)), match.group(2), bits)
        if level > allowed and name not in extra:
            what = f"{NAMES[level]} instruction in {NAMES[allowed]} code"
            findings.setdefault((function, what, name), match.group(2))
        if unaligned_stack and ALIGNED_WIDE_MOVE.match(match.group(2)):
            findings.setdefault((function, "aligned move of a wide register", name), match.group(2))
    lines = [f"{path}: {what}, {function}: {text}" for (function, what, _), text in findings.items()]

    for line in run(nm, "--defined-only", path).splitlines():
        kind, symbol = line.split()[-2:]
        if "_GLOBAL__sub_I_" in symbol:
            lines.append(f"{path}: dynamic initialiser, which may run after load has filled the tables: {symbol}")
        if per_set and kind in "wWvVu":
            lines.append(f"{path}: weak symbol in a per-set file: {symbol}")
    if per_set:
        # In COFF the same is a COMDAT section. (In ELF it is both; the thunks of 32-bit position-independent code,
        # which are one plain move, are COMDAT without being weak.)
        for line in run(objdump, "-h", "-w", path).splitlines():
            if "LINK_ONCE" in line and " .group " not in line:
                lines.append(f"{path}: COMDAT section in a per-set file: {line.split()[1]}")
    return lines, count


def check_list(arguments):
    with open(arguments.list) as file:
        objects = [line for line in file.read().splitlines() if line]
    if not objects:
        sys.exit(f"error: {arguments.list} names no object")
    findings = []
    count = 0
    for path in objects:
        lines, instructions = check_object(path, arguments.bits, arguments.unaligned_stack, arguments.objdump,
                                           arguments.nm)
        findings += lines
        count += instructions
    if count == 0:
        sys.exit("error: the objects hold no code")
    reporting.end(findings, f"{len(objects)} objects, {count} instructions")


PIECE = re.compile(r"^ \.text\S*\s+0x([0-9a-f]+)\s+0x([0-9a-f]+) (\S.*)$", re.MULTILINE)


def read_map(path):
    """Pieces of code in a GNU linker map: first address, end, source file's stem, whose it is."""
    with open(path) as file:
        text = file.read().split("Linker script and memory map", 1)[-1]
    pieces = []
    for start, size, origin in PIECE.findall(text):
        start, size = int(start, 16), int(size, 16)
        if start == 0 or size == 0:
            continue  # left out of the file
        member = re.search(r"\(([^()]*)\)$", origin)
        name = member.group(1) if member else os.path.basename(origin)
        # A member of another library may have any name.
        ours = not member or os.path.basename(origin).startswith("libzepbmp.a(")
        pieces.append((start, start + size, name.split(".")[0] if ours else "", origin))
    return sorted(pieces)


def check_linked(dll, pieces, bits, unaligned_stack, objdump):
    """Findings of a linked DLL, and how many instructions were looked at."""
    findings = {}
    counts = dict.fromkeys(("ours", "other", "per set"), 0)
    current = 0
    for line in run(objdump, "-d", "-w", "-M", "att", dll).splitlines():
        match = INSTRUCTION.match(line)
        if not match:
            continue
        address = int(line.split(":")[0], 16)
        if pieces and address >= pieces[-1][1]:
            break  # the lists of constructors stand behind the code
        while current < len(pieces) and address >= pieces[current][1]:
            current += 1
        name, level = level_of(bytes.fromhex(match.group(1)), match.group(2), bits)
        if not pieces or address < pieces[current][0]:
            stem, origin = "", "between the pieces"
        else:
            stem, origin = pieces[current][2:]
        counts["per set" if is_per_set(stem) else "ours" if stem else "other"] += 1
        allowed, extra = allowed_in(stem, bits)
        if level > allowed and name not in extra:
            findings.setdefault((origin, f"{NAMES[level]} instruction", name), f"{address:x}: {match.group(2)}")
        if unaligned_stack and ALIGNED_WIDE_MOVE.match(match.group(2)):
            findings.setdefault((origin, "aligned move of a wide register", name), f"{address:x}: {match.group(2)}")
    return [f"{dll}: {what} from {origin}: {text}" for (origin, what, _), text in findings.items()], counts


def self_test_linked(dll, pieces, bits, objdump):
    """Where a per-set file above the baseline calls itself baseline, that has to be found; where none does, nothing."""
    wrong = int(bool(check_linked(dll, pieces, bits, False, objdump)[0]))
    baseline = allowed_in("", bits)[0]
    above = {suffix for suffix, level in LEVEL_OF_FILE.items() if level > baseline}
    if bits == 32:
        above.remove("avx512")  # built for 64 bits only
    suffixes = sorted(above & {stem.rsplit("_", 1)[-1] for _, _, stem, _ in pieces if is_per_set(stem)})
    for suffix in suffixes:
        renamed = [(start, end, stem.replace("_" + suffix, ""), origin) for start, end, stem, origin in pieces]
        if not check_linked(dll, renamed, bits, False, objdump)[0]:
            wrong += 1
            print(f"not found: {suffix} instructions in baseline code")
    for suffix in sorted(above - set(suffixes)):
        wrong += 1
        print(f"the DLL has no code of {suffix}")
    reporting.end_self_test(len(above) + 1, wrong)


def report_linked(arguments):
    dll, map_path = arguments.linked
    pieces = read_map(map_path)
    if arguments.self_test:
        self_test_linked(dll, pieces, arguments.bits, arguments.objdump)
    findings, counts = check_linked(dll, pieces, arguments.bits, arguments.unaligned_stack, arguments.objdump)
    if not counts["ours"] or not counts["per set"]:
        sys.exit("error: the map does not fit the DLL")
    reporting.end(findings,
                  "instructions: {ours} baseline, {per set} per set, {other} of other libraries".format(**counts))


# What the checker has to find, and what it has to let pass: file stem, bits, assembly, whether that is a finding.
SELF_TEST = [
    ("a", 32, "addl %ecx, %eax", False),
    ("a", 32, "cmovel %ecx, %eax", False),
    ("a", 32, "fcomip", False),
    ("a", 32, "pause", False),
    ("a", 32, "tzcntl %eax, %eax", False),
    ("a", 32, "paddb %mm1, %mm0", True),
    ("a", 32, "movd %eax, %mm0", True),
    ("a", 32, "emms", True),
    ("a", 32, "prefetchnta (%eax)", True),
    ("a", 32, "sfence", True),
    ("a", 32, "movnti %eax, (%ecx)", True),
    ("a", 32, "ldmxcsr (%eax)", True),
    ("a", 32, "addss %xmm1, %xmm0", True),
    ("a", 32, "cvttsd2si (%eax), %eax", True),
    ("a", 32, "movsd (%eax), %xmm0", True),
    ("a", 32, "vaddps %ymm0, %ymm0, %ymm0", True),
    ("a", 32, "fisttpl (%eax)", True),
    ("a", 32, "popcnt %eax, %eax", True),
    ("a", 32, "bound %eax, (%ecx)", False),
    ("a_mmx", 32, "paddb %mm1, %mm0", False),
    ("a_mmx", 32, "emms", False),
    ("a_mmx", 32, "pmaxub %mm1, %mm0", True),
    ("a_mmx", 32, "pshufw $0, %mm1, %mm0", True),
    ("a_mmx", 32, "movntq %mm0, (%eax)", True),
    ("a_mmx", 32, "paddq %mm1, %mm0", True),
    ("a_mmx", 32, "movdqa %xmm1, %xmm0", True),
    ("a_mmx", 32, "movq2dq %mm0, %xmm0", True),
    ("a_mmxext", 32, "pshufw $0, %mm1, %mm0", False),
    ("a_mmxext", 32, "sfence", False),
    ("a_mmxext", 32, "paddq %mm1, %mm0", True),
    ("a_mmxext", 32, "pshufb %mm1, %mm0", True),
    ("a_mmxext", 32, "xorps %xmm0, %xmm0", True),
    ("a_sse2", 32, "paddb %xmm1, %xmm0", False),
    ("a_sse2", 32, "andnps %xmm1, %xmm0", False),
    ("a_sse2", 32, "pshufb %xmm1, %xmm0", True),
    ("a_sse2", 32, "pmovzxbw %xmm1, %xmm0", True),
    ("a_sse2", 32, "vpaddb %xmm1, %xmm0, %xmm0", True),
    ("a_avx2", 32, "vpaddb %ymm1, %ymm0, %ymm0", False),
    ("a_avx2", 32, "vzeroupper", False),
    ("a_avx2", 32, "vfmadd132ps %ymm1, %ymm0, %ymm0", True),
    ("a_avx2", 32, "vpaddb %zmm1, %zmm0, %zmm0", True),
    ("a_avx2", 64, "vmovdqu8 (%rax), %ymm1", True),
    ("a_avx2", 64, "vpaddb %ymm17, %ymm0, %ymm0", True),
    ("a_avx512", 64, "vpaddb %zmm1, %zmm0, %zmm0{%k1}{z}", False),
    ("a_avx512", 64, "vfmadd132ps %zmm1, %zmm0, %zmm0", True),
    ("a", 64, "addsd %xmm1, %xmm0", False),
    ("a", 64, "vaddsd %xmm1, %xmm0, %xmm0", True),
    ("a", 64, "pshufb %xmm1, %xmm0", True),
    ("a", 64, "andn %eax, %eax, %eax", True),
    ("attach_win32", 32, "xorps %xmm0, %xmm0", False),
    ("attach_win32", 32, "movaps %xmm0, (%eax)", True),
    ("a_sse2", 64, ".weak f\nf: ret", True),
    ("a_sse2", 64, ".section .text.f,\"axG\",@progbits,f,comdat\n.weak f\nf: ret", True),
    ("a", 64, ".weak f\nf: ret", False),
    ("a", 64, "_GLOBAL__sub_I_a: ret", True),
    ("a", 32, "__GLOBAL__sub_I_a: ret", True),
]

# The same where the stack is aligned to 16 bytes only.
UNALIGNED_STACK_SELF_TEST = [
    ("a_avx2", 64, "vmovdqa %ymm0, 32(%rsp)", True),
    ("a_avx2", 64, "vmovaps -64(%rbp,%rax,4), %ymm11", True),
    ("a_avx2", 64, "vmovapd %ymm0, (%rcx)", True),
    ("a_avx2", 64, "vmovdqa %ymm0, %ymm1", False),
    ("a_avx2", 64, "vmovdqa %xmm0, 32(%rsp)", False),
    ("a_avx2", 64, "vmovdqu %ymm0, 32(%rsp)", False),
    ("a_avx2", 64, "vpaddb 32(%rsp), %ymm0, %ymm1", False),
    ("a_avx2", 64, "vmovntdq %ymm0, (%rcx)", False),
    ("a_avx512", 64, "vmovdqa64 %zmm17, 64(%rsp)", True),
    ("a_avx512", 64, "vmovdqa32 (%rsp), %zmm1{%k1}{z}", True),
    ("a_avx512", 64, "vmovaps %ymm17, 64(%rsp)", True),
    ("a_avx512", 64, "vmovdqu64 %zmm17, 64(%rsp)", False),
]


def self_test(arguments):
    wrong = 0
    with tempfile.TemporaryDirectory() as folder:
        cases = [(*case, False) for case in SELF_TEST] + [(*case, True) for case in UNALIGNED_STACK_SELF_TEST]
        for stem, bits, text, bad, unaligned_stack in cases:
            source = os.path.join(folder, "source.s")
            path = os.path.join(folder, stem + ".cpp.o")
            with open(source, "w") as file:
                file.write(text + "\n")
            run(arguments.assembler, f"--{bits}", source, "-o", path)
            findings, _ = check_object(path, bits, unaligned_stack, arguments.objdump, arguments.nm)
            if bool(findings) != bad:
                wrong += 1
                print(f"{stem}, {bits} bits, '{text}': {'not found' if bad else findings}")
    reporting.end_self_test(len(cases), wrong)


def main():
    parser = argparse.ArgumentParser(description="Checks the instructions and weak symbols of object files.")
    parser.add_argument("--bits", type=int, choices=(32, 64))
    parser.add_argument("--unaligned-stack", action="store_true", help="wide registers never move to aligned memory")
    parser.add_argument("--objdump", default="objdump")
    parser.add_argument("--nm", default="nm")
    parser.add_argument("--assembler", default="as")
    parser.add_argument("--self-test", action="store_true")
    parser.add_argument("--linked", nargs=2, metavar=("DLL", "MAP"))
    parser.add_argument("list", nargs="?")
    arguments = parser.parse_args()
    if arguments.linked and arguments.bits:
        report_linked(arguments)
    elif arguments.self_test:
        self_test(arguments)
    elif not arguments.list or not arguments.bits:
        parser.error("a list of objects and --bits are needed")
    check_list(arguments)


if __name__ == "__main__":
    main()
