#!/usr/bin/python3
"""check_symbols.py LIBRARY INCLUDE: every exported symbol belongs to the public headers, and nothing of theirs is
missing that they mark for export."""
import os
import re
import subprocess
import sys

library, include = sys.argv[1:]
lines = subprocess.run(["nm", "-DC", "--defined-only", library], capture_output=True, text=True, check=True).stdout
symbols = [line.split(" ", 2)[2] for line in lines.splitlines()]
text = "".join(open(os.path.join(folder, name)).read() for folder, _, names in os.walk(include) for name in names)
classes = set(re.findall(r"(?:class|struct) ZALTAG_EXPORT (\w+)", text))
free = set(re.findall(r"^ZALTAG_EXPORT (?:extern )?[^;{(]*?(\w+)(?:\(|;| =)", text, re.M))
made = re.compile(r"^(?:vtable for |VTT for |typeinfo for |typeinfo name for |(?:non-)?virtual thunk to )?(\w+)")
faults, seen = [], set()
for symbol in symbols:
    owner = made.match(symbol.split("@")[0])
    name = owner.group(1) if owner else ""
    seen.add(name)
    if name not in classes | free and not symbol.startswith("ZALTAG_1"):
        faults.append(f"exported, but in no public header: {symbol}")
# Classes that consist of inline functions alone, without a vtable, leave nothing in the library.
with_code = {name for name in classes if re.search(rf"class ZALTAG_EXPORT {name}\b", text)}
faults += [f"declared for export, but not exported: {name}" for name in sorted((with_code | free) - seen)]
print("\n".join(faults) if faults else f"{len(symbols)} symbols, all public")
sys.exit(1 if faults or len(symbols) < 100 else 0)
