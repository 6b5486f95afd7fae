#!/usr/bin/env python3
"""Fails when code that any processor may come to run holds an instruction that not every one has.

    processor_levels.py --objdump OBJDUMP --nm NM OBJECT...

x86-64 only. What stands in an object under bulk/vectors/ may use what the object's name begins
with (sse41, avx2, avx512), but only in functions of its own: an external one is called, or chosen
by the linker for all objects, before anybody has asked what the processor has. All other code
holds to what every x86-64 processor has (SSE2).
"""
import argparse
import concurrent.futures
import os
import re
import subprocess
import sys
from pathlib import Path

BASE, SSE41, AVX2, AVX512 = range(4)
NAMES = {BASE: "x86-64", SSE41: "SSE4.1", AVX2: "AVX2", AVX512: "AVX-512"}
LEVEL_OF_OBJECT = {"sse41": SSE41, "avx2": AVX2, "avx512": AVX512}

# tzcnt is not among them: it is what disassemblers call the bsf that compilers put a prefix
# before, and gives the same on processors that do not know the prefix.
UP_TO_SSE41 = re.compile(
    r"addsubp[sd]|hadd|hsub|lddqu|movddup|movs[hl]dup|pshufb|ph(add|sub)|pmaddubsw|pmulhrsw|psign|"
    r"pabs[bwd]|palignr|p?blend|dpp[sd]|extractps|insertps|movntdqa|mpsadbw|packusdw|pcmpeqq|"
    r"pextr[bdq]|phminposuw|pinsr[bdq]|pm(ax|in)(s[bd]|u[dw])|pmov[sz]x|pmul(dq|ld)|ptest|round|popcnt")
UP_TO_AVX2 = re.compile(
    r"crc32|pcmpgtq|pcmp[ei]str|lzcnt|andn$|bextr|bls|bzhi|mulx|pdep|pext$|rorx|s[ah][lr]x|movbe|"
    r"v(?!err|erw|m(call|launch|resume|read|write|ptr|xo|clear))")
MASKS = re.compile(r"k(mov|or|and|xor|xnor|not|shift|add|test|unpck)")
WIDE = re.compile(r"%zmm|%k[0-7]|%[xy]mm(1[6-9]|2\d|3[01])")
SYMBOL = re.compile(r"[0-9a-f]+ <(.*)>:$")
INSTRUCTION = re.compile(r"\s+[0-9a-f]+:\t(?:(?:lock|rep[nz]*|data16|notrack|bnd|cs|ds|es) )*(\S+)(.*)")


def level_of(mnemonic, operands):
    if WIDE.search(operands) or MASKS.match(mnemonic):
        return AVX512
    if UP_TO_AVX2.match(mnemonic):
        return AVX2
    return SSE41 if UP_TO_SSE41.match(mnemonic) else BASE


def external_symbols(nm, path):
    listed = subprocess.run([nm, "--format=posix", path], check=True, capture_output=True, text=True)
    fields = (line.split() for line in listed.stdout.splitlines())
    return {field[0] for field in fields if len(field) > 1 and field[1] in "TWV"}


def allowed_in(path):
    """What the functions of an object that nothing else sees may hold."""
    path = Path(path)
    return LEVEL_OF_OBJECT.get(path.name.partition("_")[0], BASE) if path.parent.name == "vectors" \
        else BASE


def violations(arguments, path):
    """One line for each function that holds too much, and the number of instructions."""
    external = external_symbols(arguments.nm, path)
    code = subprocess.run([arguments.objdump, "-d", "--no-show-raw-insn", "-w", path], check=True,
                          capture_output=True, text=True).stdout
    found, symbol, count = {}, "?", 0
    for line in code.splitlines():
        if heading := SYMBOL.match(line):
            symbol = heading.group(1)
        elif instruction := INSTRUCTION.match(line):
            count += 1
            level = level_of(*instruction.groups())
            allowed = BASE if symbol in external else allowed_in(path)
            if level > allowed:
                found.setdefault(symbol, f"{path}: {symbol} may hold what {NAMES[allowed]} has:"
                                         f" {line.strip()}")
    return list(found.values()), count


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--objdump", required=True)
    parser.add_argument("--nm", required=True)
    parser.add_argument("objects", nargs="+")
    arguments = parser.parse_args()
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = list(pool.map(lambda path: violations(arguments, path), arguments.objects))
    lines = [line for found, _ in results for line in found]
    print(*lines, sep="\n", end="\n" if lines else "")
    print(f"{len(arguments.objects)} objects, {sum(count for _, count in results)} instructions, "
          f"{len(lines)} functions with too much")
    unread = [path for path, (_, count) in zip(arguments.objects, results) if count == 0]
    missed = [path for path in unread if Path(path).parent.name == "vectors"]
    if missed or len(unread) == len(arguments.objects):
        print(f"no instructions were found in {(missed or unread)[0]}")
        return 1
    return 1 if lines else 0


if __name__ == "__main__":
    sys.exit(main())
