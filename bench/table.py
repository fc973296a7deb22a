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
    """A command, and what is done around each of its runs. What it prints may be its own measurement."""

    def __init__(self, *command, before=None, after=None, times=1, fails=False):
        self.command, self.before, self.after, self.times = [str(part) for part in command], before, after, times
        self.fails = fails

    def run(self, turn):
        if self.before:
            self.before()
        out = DATA / "run.json"
        command = [letter(turn) if part == "ROUND" else part for part in self.command]
        done = subprocess.run([BUILD / "bench/bench_run", out, str(self.times), *command], stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, check=False)
        if done.returncode != 0 and not self.fails:
            sys.exit(f"{' '.join(self.command)} failed")
        sample = json.loads(out.read_text())
        if done.stdout.startswith(b'{"wall"'):
            sample.update(json.loads(done.stdout))
        if self.after:
            sample.setdefault("found", {}).update(self.after(turn))
        return sample


def letter(turn):
    """What the texts that a round writes end in."""
    return chr(ord("a") + turn % 26)


class Samples:
    """The samples of the jobs of one row, by the jobs' names."""

    def __init__(self, jobs):
        self.samples = {name: [] for name in jobs}
        for turn in range(options.rounds + 1):
            for name, job in jobs.items():
                sample = job.run(turn)
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

    def check_same(self, ours, floor):
        for one, other in zip(self.of(ours, "found"), self.of(floor, "found")):
            differences = [f"{name}: {one.get(name)}, floor {other.get(name)}" for name in sorted({**one, **other})
                           if one.get(name) != other.get(name)]
            if differences:
                sys.exit("the results differ: " + "; ".join(differences))

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
        })
        samples.check_same("ours", "floor")
        samples.report(f"collection.load, {program}", 0.75, work=f"{tracks_count()} tracks")
        share = samples.ratio("ours", "floor", "cpu")
        add_line(f"collection.cpu, {program}", seconds(samples.median("ours", "cpu")),
                 seconds(samples.median("floor", "cpu")), f"{share:.2f}", "≤ 0.9", share <= 0.9)
        size = file.stat().st_size / 2**20
        memory = samples.peak("ours") / size
        add_line(f"collection.memory, {program}", f"{samples.peak('ours'):.0f} MiB", f"{size:.0f} MiB (the file)",
                 f"{memory:.2f}", "≤ 0.4", memory <= 0.4)


def update_jobs(program, *modes):
    """Jobs that load a collection, set cues and save it, in these modes of the program; with the folder they use."""
    file = collection(program, tracks_count())
    work = DATA / "update" / file.name

    def fresh():
        shutil.rmtree(work.parent, ignore_errors=True)
        work.parent.mkdir()
        shutil.copy(file, work)
        os.link(f"{file}.paths", f"{work}.paths")
        os.sync()

    def written(_):
        run = subprocess.run([tool("floor_collection"), "verify", program, work], stdout=subprocess.PIPE, check=True)
        return {f"written {name}": count for name, count in json.loads(run.stdout)["found"].items()}

    jobs = {mode: Job(tool("bench_collection"), mode, program, work, before=fresh, after=written) for mode in modes}
    jobs["load"] = Job(tool("bench_collection"), "load", program, work, before=fresh)
    return jobs, Job(tool("floor_collection"), "update", program, work, before=fresh, after=written), work.parent


def add_memory(row, samples, mode, most):
    more = samples.peak(mode) - samples.peak("load")
    add_line(row, f"{samples.peak(mode):.0f} MiB", f"{samples.peak('load'):.0f} MiB (our load)", f"+ {more:.0f} MiB",
             f"≤ + {most} MiB", more <= most)


@row("collection.update")
def collection_update():
    goals = {"changedTracks": 0.8, "everyTrackWithCues": 0.9}
    for program in PROGRAMS:
        jobs, floor, folder = update_jobs(program, *goals)
        samples = Samples({**jobs, "floor": floor})
        for mode, goal in goals.items():
            samples.check_same(mode, "floor")
            samples.report(f"collection.update, {program}, {mode}", goal, ours=mode, work="1 % of the cues, save")
            add_memory(f"collection.memory of a save, {program}, {mode}", samples, mode, 16)
        shutil.rmtree(folder)


@row("collection.all")
def collection_all():
    for program in PROGRAMS:
        jobs, _, folder = update_jobs(program, "all")
        samples = Samples(jobs)
        add_memory(f"collection.memory of a save, {program}, changedTracks ({tracks_count()} changed)", samples, "all", 48)
        shutil.rmtree(folder)


@row("collection.list")
def collection_list():
    tracks = 15_000 if options.quick else 300_000
    for program in PROGRAMS:
        file = collection(program, tracks)
        samples = Samples({
            "list": Job(BUILD / "cli/zaltag", program, "tracks", "--json", f"--{program}", file),
            "load": Job(BUILD / "cli/zaltag", program, "track", "/none", f"--{program}", file, fails=True),
        })
        ratio = samples.peak("list") / samples.peak("load")
        add_line(f"collection.list, {program} ({tracks} tracks as JSON)", f"{samples.peak('list'):.0f} MiB",
                 f"{samples.peak('load'):.0f} MiB (our load)", f"{ratio:.2f}", "≤ 1.5", ratio <= 1.5)


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


# Scanning

@row("scan")
def scan():
    folder = music(files_count())
    samples = Samples({
        f"{side} {threads}": Job(*command, threads)
        for threads in (1, 2)
        for side, command in (("ours", (BUILD / "cli/zaltag", "scan", folder, "-j")),
                              ("floor", (tool("floor_read"), folder / "files.txt")))
    })
    gain = {side: samples.ratio(f"{side} 1", f"{side} 2") for side in ("ours", "floor")}
    ratio = gain["ours"] / gain["floor"]
    add_line("scan, gain of a second thread", f"{gain['ours']:.2f}", f"{gain['floor']:.2f}", f"{ratio:.2f}", "≥ 0.9",
             ratio >= 0.9)


@row("scan.memory")
def scan_memory():
    few = music(files_count())
    many = DATA / f"library-{files_count()}-times-10"
    if not many.exists():
        for number in range(10):
            shutil.copytree(few, many / str(number), copy_function=os.link)
        (many / "files.txt").write_text("".join(f"{path}\n" for path in sorted(many.glob("*/*/*"))))
    for folder, files in ((few, files_count()), (many, 10 * files_count())):
        samples = Samples({"ours": Job(BUILD / "cli/zaltag", "scan", folder, "-j", 2),
                           "floor": Job(tool("floor_read"), folder / "files.txt", 2)})
        more = samples.peak("ours") - samples.peak("floor")
        add_line(f"scan.memory ({files} files)", f"{samples.peak('ours'):.1f} MiB", f"{samples.peak('floor'):.1f} MiB",
                 f"+ {more:.1f} MiB", "≤ + 8 MiB", more <= 8)


# Saves. They leave out the syncs, on both sides, unless their names say otherwise.

# How often the saves that take a tenth of a millisecond run in one measurement.
PASSES = 20


def songs():
    name, length = ("songs-quick", 10) if options.quick else ("songs", 240)
    return library(name, 10, "--seconds", length, "--plain")


def copies(name, files):
    """Copies the files into a folder of their own and returns the list of them."""
    folder = DATA / "work" / name
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    paths = [shutil.copy(file, folder) for file in files]
    (folder / "files.txt").write_text("".join(f"{path}\n" for path in paths))
    os.sync()
    return folder / "files.txt"


def save_samples(files, ours, floor, fresh, verified=True, passes=1):
    """Runs two kinds of save, each on copies of its own, which are made anew for every run if asked."""
    def job(side, command):
        files_list = copies(side, files)

        def written(turn):
            run = subprocess.run([tool("floor_save"), "verify", letter(turn), files_list], stdout=subprocess.PIPE,
                                 check=True)
            return json.loads(run.stdout)["found"]

        return Job(*command, "ROUND", files_list, passes, before=(lambda: copies(side, files)) if fresh else None,
                   after=written if verified else None)

    program = tool("bench_save" if floor.endswith("-sync") else "bench_save_unsynced")
    samples = Samples({"ours": job("ours", (program, *ours)), "floor": job("floor", (tool("floor_save"), floor))})
    shutil.rmtree(DATA / "work")
    if verified:
        samples.check_same("ours", "floor")
    return samples


def files_of(folder, extensions="mp3 m4a wav aiff flac"):
    return [path for path in sorted(folder.glob("*/*")) if path.suffix[1:] in extensions.split()]


def short_and_full():
    return ("short", files_of(music(50))), ("full-length", files_of(songs()))


@row("save.inPlace")
def save_in_place():
    for length, files in short_and_full():
        samples = save_samples(files, ("inPlace", "fields"), "fields", False, passes=PASSES)
        samples.report(f"save.inPlace, same length, {length}", 1.2, unit=PASSES * len(files), work="per file")


@row("save.page")
def save_page():
    for length, files in short_and_full():
        samples = save_samples(files, ("safe", "page"), "page", False, passes=PASSES)
        samples.report(f"save.page, safe, {length}", 1.3, unit=PASSES * len(files), work="per file")


def growing_saves(sync):
    for formats, floor, goal, beside in (("mp3", "grow", 1.0, "TagLib"), ("flac", "grow", 1.0, "TagLib"),
                                         ("m4a", "copy", 1.1, "copy"), ("wav", "copy", 1.1, "copy"),
                                         ("aiff", "copy", 1.1, "copy")):
        files = files_of(songs(), formats)
        samples = save_samples(files, ("safe", "grow"), floor + sync, True, verified=floor == "grow")
        samples.report(f"save.grow{sync}, {formats}, beside {beside}", goal, unit=len(files), work="per file")


@row("save.grow")
def save_grow():
    growing_saves("")


@row("save.grow-sync")
def save_grow_synced():
    growing_saves("-sync")


@row("save.record")
def save_record():
    length = 10 if options.quick else 567
    file = made(f"record-{length}.wav", "ffmpeg", "-v", "error", "-f", "lavfi", "-i", f"anoisesrc=d={length}:a=0.3", "-ac",
                "2", "-ar", "44100", "-bitexact", "OUT")
    for sync in ("", "-sync"):
        samples = save_samples([file], ("safe", "record"), f"copy{sync}", False, verified=False)
        samples.report(f"save.record{sync}", 1.15, work=f"{file.stat().st_size / 1e6:.0f} MB of WAV")


# The program

@row("sync.match")
def sync_match():
    """A dry run that finds nothing to write: what matching costs is the difference between two collections."""
    tracks = 15_000 if options.quick else 300_000
    folder = made(f"matching-{tracks}", HERE / "data/make_matching.py", "OUT", tracks)
    sync = (BUILD / "cli/zaltag", "sync", folder / "music", "--from", "rekordbox-hot", "--to", "traktor", "--dry-run",
            "--traktor", folder / "none.nml", "--rekordbox")
    there = ("C:/DJ/One", "/Volumes/USB/Two", "/Users/dj/Three")
    maps = [word for i, name in enumerate(there) for word in ("--map", f"{name}={folder}/music/{i}")]
    samples = Samples({"elsewhere": Job(*sync, folder / "elsewhere.xml", *maps), "here": Job(*sync, folder / "here.xml")})
    more = samples.median("elsewhere", "cpu") - samples.median("here", "cpu")
    add_line(f"sync.match ({tracks} tracks, three maps, case)", seconds(samples.median("elsewhere", "cpu")),
             seconds(samples.median("here", "cpu")), f"+ {more:.2f} s", "≤ + 0.3 s", more <= 0.3, "",
             f"{samples.peak('elsewhere'):.0f} / {samples.peak('here'):.0f}", "processor time")


# Programs that use the library

@row("start")
def start():
    samples = Samples({"ours": Job(tool("bench_start"), times=100), "floor": Job(tool("floor_start"), times=100)})
    samples.report("start", 1.5)


@row("compile")
def compile_time():
    compiler = ["g++", "-std=c++20", "-O2", "-I", HERE.parent / "include", "-c", "-o", "/dev/null"]
    samples = Samples({"ours": Job(*compiler, HERE / "programs/headers.cpp"),
                       "floor": Job(*compiler, HERE / "floors/headers.cpp")})
    more = samples.median("ours") - samples.median("floor")
    cpu = samples.median("ours", "cpu") - samples.median("floor", "cpu")
    add_line("compile", seconds(samples.median("ours")), seconds(samples.median("floor")), f"+ {more:.2f} s", "≤ + 0.8 s",
             more <= 0.8, f"+ {cpu:.2f} s", f"{samples.peak('ours'):.0f} / {samples.peak('floor'):.0f}")


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
