#!/usr/bin/env python3
"""What olefile reads of the documents in a directory: a line of JSON, for each file the digests of its
streams by their paths. Runs by the Python that has olefile, which is Debian's own.

    olefile_reading.py DIRECTORY
"""
import hashlib
import json
import sys
from pathlib import Path

import olefile

found = {}
for path in sorted(Path(sys.argv[1]).glob("*.*")):
    with olefile.OleFileIO(str(path), raise_defects=olefile.DEFECT_INCORRECT) as document:
        found[path.name] = {"/".join(stream): hashlib.sha256(document.openstream(stream).read()).hexdigest()
                            for stream in document.listdir()}
print(json.dumps(found))
