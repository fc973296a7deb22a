#!/usr/bin/python3
"""table.py [--quick] [--rounds N] [--list] [NAME...]: measures the library beside the floor programs and prints one
table. A NAME is a row or the group in front of its dot ("collection", "read", "save"); all rows without one.

All jobs of a row run in turn, round after round, after one round that does not count: A B C A B C. A ratio is the
median of the ratios of each round. "wall" is what the goals speak of; "cpu", the processor time of all threads, hardly
changes when other programs use the machine. Memory is the largest peak of a process. What the programs found must be
the same on both sides, or the row fails."""
import argparse
import json
import os
import pathlib
import shutil
import statistics
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
BUILD = HERE.parent / "build" / "release"
DATA = pathlib.Path(os.environ.get("ZALTAG_BENCH_DATA", HERE.parent / "build" / "bench-data"))
ROWS = {}
LINES = []


class Job:
    """A command, and what is done before each of its runs. What it prints may be its own measurement."""

    def __init__(self, *command, before=None, after=None, times=1):
        self.command, self.before, self.after, self.times = [str(part) for part in command], before, after, times

    def run(self):
        if self.before:
            self.before()
        out = DATA / "run.json"
        done = subprocess.run([BUILD / "bench/bench_run", out, str(self.times), *self.command],
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
        if done.returncode != 0:
            sys.exit(f"{' '.join(self.command)} failed")
        sample = json.loads(out.read_text())
        if done.stdout.startswith(b'{"wall"'):
            sample.update(json.loads(done.stdout))
        if self.after:
            sample.setdefault("found", {}).update(self.after())
        return sample


class Samples:
    """The samples of the jobs of one row, by the jobs' names."""

    def __init__(self, jobs):
        self.samples = {name: [] for name in jobs}
        for turn in range(options.rounds + 1):
            for name, job in jobs.items():
                sample = job.run()
                if turn > 0:
                    self.samples[name].append(sample)

    def of(self, name, key):
        return [sample[key] for sample in self.samples[name]]

    def median(self, name, key="wall"):
        return statistics.median(self.of(name, key))

    def ratio(self, ours, floor, key="wall"):
        return statistics.median(a / b for a, b in zip(self.of(ours, key), self.of(floor, key)) if b > 0)

    def peak(self, name):
        return max(self.of(name, "peak"))

    def check_same(self, *names):
        found = {json.dumps(sample["found"], sort_keys=True) for name in names for sample in self.samples[name]}
        if len(found) != 1:
            sys.exit("the results differ:\n" + "\n".join(sorted(found)))

    def report(self, row, goal, ours="ours", floor="floor", unit=1.0, work=""):
        """One line: how long ours took beside the floor."""
        ratio = self.ratio(ours, floor)
        add_line(row, seconds(self.median(ours) / unit), seconds(self.median(floor) / unit), f"{ratio:.2f}",
                 f"≤ {goal:g}", ratio <= goal, f"{self.ratio(ours, floor, 'cpu'):.2f}",
                 f"{self.peak(ours):.0f} / {self.peak(floor):.0f}", work)


def seconds(value):
    for unit, size in (("s", 1), ("ms", 1e-3)):
        if value >= size:
            return f"{value / size:.3g} {unit}"
    return f"{value / 1e-6:.3g} µs"


def add_line(row, ours, floor, ratio, goal, met, cpu="", memory="", work=""):
    LINES.append([row + (f" ({work})" if work else ""), ours, floor, ratio, goal, "met" if met else "**not met**", cpu,
                  memory])
    print(" | ".join(LINES[-1]), flush=True)


def row(name):
    def register(function):
        ROWS[name] = function
        return function
    return register


def tool(name):
    return BUILD / "bench" / name


def made(name, *command):
    """A file or folder of the bench's data, made by the first row that needs it."""
    path = DATA / name
    if not path.exists():
        beside = DATA / f"making-{name}"
        shutil.rmtree(beside, ignore_errors=True)
        print(f"making {path}", file=sys.stderr)
        subprocess.run([part if part != "OUT" else str(beside) for part in map(str, command)], check=True)
        for extra in DATA.glob(f"{beside.name}.*"):
            extra.rename(DATA / extra.name.removeprefix("making-"))
        beside.rename(path)
    return path


def collection(program, tracks):
    return made(f"{program}-{tracks}.xml", HERE / "data/make_collection.py", program, tracks, "OUT")


def library(name, files, *arguments):
    folder = made(name, HERE / "data/make_library.py", "OUT", files, *arguments)
    paths = sorted(str(path) for path in folder.glob("*/*"))
    (folder / "files.txt").write_text("".join(path + "\n" for path in paths))
    return folder


# Collections

PROGRAMS = ("rekordbox", "traktor")


def tracks_count():
    return 5000 if options.quick else 100_000


@row("collection.load")
def collection_load():
    for program in PROGRAMS:
        file = collection(program, tracks_count())
        samples = Samples({
            "ours": Job(tool("bench_collection"), "load", program, file),
            "floor": Job(tool("floor_collection"), "load", program, file),
            "document": Job(tool("floor_collection"), "document", program, file),
        })
        samples.check_same("ours", "floor")
        samples.report(f"collection.load, {program}", 0.75, work=f"{tracks_count()} tracks")
        memory = samples.peak("ours") / samples.peak("document")
        add_line(f"collection.memory, {program}", f"{samples.peak('ours'):.0f} MiB",
                 f"{samples.peak('document'):.0f} MiB", f"{memory:.3f}", "≤ 1.15", memory <= 1.15)


@row("collection.update")
def collection_update():
    for program in PROGRAMS:
        file = collection(program, tracks_count())
        work = DATA / "update" / file.name

        def fresh():
            shutil.rmtree(work.parent, ignore_errors=True)
            work.parent.mkdir()
            shutil.copy(file, work)
            os.link(f"{file}.paths", f"{work}.paths")
            os.sync()

        def written():
            run = subprocess.run([tool("floor_collection"), "verify", program, work], stdout=subprocess.PIPE, check=True)
            return {f"written {name}": count for name, count in json.loads(run.stdout)["found"].items()}

        samples = Samples({
            "ours": Job(tool("bench_collection"), "update", program, work, before=fresh, after=written),
            "floor": Job(tool("floor_collection"), "update", program, work, before=fresh, after=written),
            "load": Job(tool("bench_collection"), "load", program, work, before=fresh),
        })
        samples.check_same("ours", "floor")
        samples.report(f"collection.update, {program}", 0.9, work="1 % of the cues, save")
        more = samples.peak("ours") - samples.peak("load")
        add_line(f"collection.memory of a save, {program}", f"{samples.peak('ours'):.0f} MiB",
                 f"{samples.peak('load'):.0f} MiB (our load)", f"+ {more:.0f} MiB", "≤ + 64 MiB", more <= 64)
        shutil.rmtree(work.parent)


@row("collection.growth")
def collection_growth():
    small, large = (500, 15_000) if options.quick else (10_000, 300_000)
    for program in PROGRAMS:
        samples = Samples({str(tracks): Job(tool("bench_collection"), "load", program, collection(program, tracks))
                           for tracks in (small, large)})
        ratio = samples.ratio(str(large), str(small))
        add_line(f"collection.growth, {program} ({small} to {large} tracks)", seconds(samples.median(str(large))),
                 seconds(samples.median(str(small))), f"{ratio:.1f}", "≤ 33", ratio <= 33,
                 f"{samples.ratio(str(large), str(small), 'cpu'):.1f}",
                 f"{samples.peak(str(large)):.0f} / {samples.peak(str(small)):.0f}")


# Reading

def music(files):
    return library(f"library-{files}", files)


def files_count():
    return 50 if options.quick else 1000


@row("read")
def read():
    files = music(files_count()) / "files.txt"
    samples = Samples({
        "ours": Job(tool("bench_read"), files),
        "floor": Job(tool("floor_read"), files),
        "mutagen": Job(HERE / "data/read_mutagen.py", files),
        "exiftool": Job("exiftool", "-a", "-G1", "-@", files),
    })
    samples.check_same("ours", "floor")
    samples.report("read", 1.2, work=f"{files_count()} files")
    for other, goal in (("mutagen", 5), ("exiftool", 17)):
        times = samples.ratio(other, "ours")
        add_line(f"read, beside {other}", seconds(samples.median("ours")), seconds(samples.median(other)),
                 f"1 / {times:.1f}", f"≤ 1 / {goal}", times >= goal, f"1 / {samples.ratio(other, 'ours', 'cpu'):.1f}",
                 f"{samples.peak('ours'):.0f} / {samples.peak(other):.0f}")


def main():
    DATA.mkdir(parents=True, exist_ok=True)
    chosen = [name for name in ROWS
              if not options.names or any(name == one or name.startswith(f"{one}.") for one in options.names)]
    if options.list or not chosen:
        print("\n".join(ROWS))
        return
    for name in chosen:
        ROWS[name]()
    head = ["row", "ours", "floor", "ratio", "goal", "met", "ratio of cpu", "peak MiB, ours / floor"]
    print(f"\nmedians of {options.rounds} rounds\n")
    for cells in [head, ["---"] * len(head), *LINES]:
        print("| " + " | ".join(cells) + " |")


parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
parser.add_argument("names", nargs="*", metavar="NAME")
parser.add_argument("--quick", action="store_true", help="little data and two rounds, to see that it works")
parser.add_argument("--rounds", type=int)
parser.add_argument("--list", action="store_true", help="print the names of the rows")
options = parser.parse_args()
options.rounds = options.rounds or (2 if options.quick else 5)
main()
