"""The committed corpus of a target: seeds with names of their own, and what fuzzing found,
named by its hash.
"""
import re
import shutil

FOUND_NAME = re.compile("[0-9a-f]{40}")


def files_of(directory):
    return sorted(path for path in directory.glob("*") if path.is_file())


def features_by_file(control_file):
    """What the control file of a merge says: the features that each input has, and how many
    of the inputs come from the first directory."""
    lines = control_file.read_text(errors="replace").splitlines()
    count, first = int(lines[0]), int(lines[1])
    names = lines[2:2 + count]
    features = {name: set() for name in names}
    for line in lines[2 + count:]:
        kind, *numbers = line.split()
        if kind == "FT":
            features[names[int(numbers[0])]] = set(map(int, numbers[1:]))
    return features, names[:first]


def choose(features, seeds, sizes, most_files, most_bytes):
    """Few small inputs that have most of the features that the seeds lack: always the one
    with the most for its size next."""
    covered = set().union(*(features[name] for name in seeds))
    left = {name: found - covered for name, found in features.items() if name not in set(seeds)}
    chosen, room = [], most_bytes
    while len(chosen) < most_files:
        left = {name: found - covered for name, found in left.items() if sizes[name] <= room}
        left = {name: found for name, found in left.items() if found}
        if not left:
            break
        best = max(left, key=lambda name: (len(left[name]) / (sizes[name] + 16), name))
        covered |= left.pop(best)
        room -= sizes[best]
        chosen.append(best)
    return chosen


def replace_found(directory, chosen):
    """Makes the chosen inputs the found ones of the committed corpus."""
    keep = {path.name for path in chosen}
    for path in chosen:
        if not (directory / path.name).exists():
            shutil.copyfile(path, directory / path.name)
    for path in files_of(directory):
        if FOUND_NAME.fullmatch(path.name) and path.name not in keep:
            path.unlink()
