#!/usr/bin/python3
"""read_mutagen.py LIST: opens every file of a list with mutagen, which reads every frame, item and field."""
import sys

import mutagen

values = 0
for path in open(sys.argv[1], encoding="utf-8").read().splitlines():
    values += len(mutagen.File(path).tags)
assert values > 0
