#!/usr/bin/env python3
"""Stands for a fuzz target in the test of scripts/fuzz: takes the options of libFuzzer that the
script gives, and 'crashes' as its settings in the environment say.
"""
import hashlib
import json
import os
import sys
import time
from pathlib import Path

OPTIONS = dict(a[1:].split("=", 1) for a in sys.argv[1:] if a.startswith("-"))
PATHS = [Path(a) for a in sys.argv[1:] if not a.startswith("-")]
CAUSE = os.environ.get("MADE_UP_CAUSE")


def feature_of(data):
    """An input has the features of its letters."""
    return sorted(set(data))


def minimise():
    data = PATHS[0].read_bytes()
    Path(OPTIONS["exact_artifact_path"]).write_bytes(data[:1])
    return 0


def merge():
    target, *sources = PATHS
    seen = {b for path in target.iterdir() for b in path.read_bytes()}
    names = sorted(map(str, target.iterdir())) if target.exists() else []
    first = len(names)
    names += [str(path) for source in sources for path in sorted(source.iterdir())]
    if "merge_control_file" in OPTIONS:
        lines = [str(len(names)), str(first), *names]
        for number, name in enumerate(names):
            data = Path(name).read_bytes()
            lines += [f"STARTED {number} {len(data)}",
                      " ".join(["FT", str(number), *map(str, feature_of(data))])]
        Path(OPTIONS["merge_control_file"]).write_text("\n".join(lines) + "\n")
    for name in sorted(names[first:], key=os.path.getsize):
        data = Path(name).read_bytes()
        if not seen.issuperset(data):
            seen.update(data)
            (target / Path(name).name).write_bytes(data)
    return 0


def fuzz():
    Path(os.environ["KSV_FUZZ_SCRATCH"], "left_behind").write_text("by a crash")
    for text in json.loads(os.environ.get("MADE_UP_FOUND", "[]")):
        data = text.encode()
        (PATHS[0] / hashlib.sha1(data).hexdigest()).write_bytes(data)
    print("stat::number_of_executed_units: 1234")
    if not CAUSE:
        return 0
    Path(OPTIONS["artifact_prefix"] + "crash-0123").write_bytes(b"Xlarge")
    print(CAUSE)
    return 77


if __name__ == "__main__":
    if os.environ.get("MADE_UP_HANGS"):
        time.sleep(1000)
    sys.exit(minimise() if "minimize_crash" in OPTIONS else merge() if "merge" in OPTIONS else fuzz())
