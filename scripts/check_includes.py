#!/usr/bin/python3
"""Checks who includes whom: fails on an edge between rooms that the table below does not allow, on a cycle
between files, and on a third-party header outside the rooms that may see it."""
import os
import re
import sys

ROOMS = {
    "base": [],
    "platform": ["base"],
    "pictures": ["base"],
    "serato": ["base", "platform"],
    "records": ["serato", "base", "platform"],
    "taglib": ["platform", "base"],
    "walks": ["taglib", "platform", "base"],
    "stores": ["walks", "taglib", "records", "platform", "base"],
    "files": ["stores", "walks", "taglib", "platform", "base"],
    "tag": ["stores", "walks", "records", "serato", "pictures", "platform", "base"],
    "id3": ["tag", "files", "stores", "taglib", "records", "platform", "base"],
    "containers": ["id3", "tag", "files", "stores", "walks", "taglib", "records", "platform", "base"],
    "collection": ["records", "platform", "base"],
    "rekordbox": ["collection", "records", "platform", "base"],
    "traktor": ["collection", "records", "platform", "base"],
    "tools": ["containers", "id3", "tag", "files", "stores", "walks", "taglib", "records", "serato", "pictures",
              "platform", "base"],
    "facade": ["rekordbox", "traktor", "collection", "containers", "id3", "tag", "records", "platform", "base"],
}
# A library's headers and the rooms that may include them.
THIRD_PARTY = {
    r"^(taglib/|tag\.h|t[a-z]+\.h$|id3v\d|mpegfile|attachedpicture|commentsframe|textidentification|"
    r"generalencapsulated|privateframe|unknownframe|mp4|flac|xiph|wavfile|aifffile|rifffile|infotag|apetag|"
    r"unsynchronizedlyrics)": ["taglib", "walks", "stores", "files", "id3", "containers",
                              "tools"],
    r"^b64/": ["serato"],
    r"^fmt/": list(ROOMS),
    r"^(nlohmann/|simdjson\.h)": ["base"],
    r"^(curl/|asio)": ["platform"],
    r"^zlib\.h": ["platform", "pictures"],
    r"^(png\.h|jpeglib|jerror|webp/|stb)": ["pictures"],
    r"^utf8proc": ["base", "collection"],
    r"^(pugixml|expat\.h)": ["collection"],
}
OUTSIDE = ("cli", "bench", "examples", "python")  # see the public headers only
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.M)


def room_of(path):
    parts = path.split("/")
    if parts[0] == "src":
        return parts[1]
    if parts[:2] == ["include", "zaltag"] and len(parts) > 3:
        return parts[2]
    return None


def resolve(root, path, name):
    """The file of this tree that an include names, or None for a foreign header."""
    for base in (os.path.dirname(path), "src", "include"):
        candidate = os.path.normpath(os.path.join(base, name))
        if os.path.isfile(os.path.join(root, candidate)):
            return candidate
    return None


def check(root):
    faults, edges = [], {}
    for top in ("src", "include") + OUTSIDE:
        for folder, _, names in os.walk(os.path.join(root, top)):
            for name in sorted(names):
                if not name.endswith((".h", ".cpp")):
                    continue
                path = os.path.relpath(os.path.join(folder, name), root)
                with open(os.path.join(root, path), encoding="utf-8") as file:
                    includes = INCLUDE.findall(file.read())
                edges[path] = []
                for bracket, include in includes:
                    check_one(root, path, bracket, include, edges, faults)
    faults += cycles(edges)
    if not edges:
        faults.append("no source file was found: the check has nothing to hold")
    return faults


def check_one(root, path, bracket, include, edges, faults):
    room, top = room_of(path), path.split("/")[0]
    target = resolve(root, path, include)
    if target:
        edges[path].append(target)
    if top in OUTSIDE:
        if target and not target.startswith(("include/", top + "/")):
            faults.append(f"{path}: {include}: only <zaltag/...> is open to {top}/")
        return
    if target is None:
        if include.startswith("zaltag/") or bracket == '"':
            faults.append(f"{path}: {include}: no such header")
        for pattern, rooms in THIRD_PARTY.items():
            if re.match(pattern, include) and room not in rooms:
                faults.append(f"{path}: {include}: this library is closed to the room {room}")
            elif re.match(pattern, include) and top == "include":
                faults.append(f"{path}: {include}: a public header names no library below")
        return
    to = room_of(target)
    if room is None or to is None or to == room:
        return
    if to not in ROOMS.get(room, []):
        faults.append(f"{path}: {include}: {room}/ may not include {to}/")
    if top == "include" and target.startswith("src/"):
        faults.append(f"{path}: {include}: a public header includes an inner one")


def cycles(edges):
    state, faults = {}, []

    def visit(path, trail):
        state[path] = "open"
        for target in edges.get(path, []):
            if state.get(target) == "open":
                faults.append("cycle: " + " -> ".join(trail[trail.index(target):] + [target]))
            elif target not in state:
                visit(target, trail + [target])
        state[path] = "done"

    for path in edges:
        if path not in state:
            visit(path, [path])
    return faults


if __name__ == "__main__":
    found = check(os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else "."))
    print("\n".join(found) if found else "include rules hold")
    sys.exit(1 if found else 0)
