#!/usr/bin/env python3
"""Duplicate scanner and hash beside their peers.

    duplicates.py make FOLDER              a corpus of about 2.5 GB in 6,000 files
    duplicates.py run FOLDER PROGRAMS      rounds in turn, warm and cold (cold only as root), medians and ratios

PROGRAMS is the folder of the built programs, such as build/bench/bin. The sets that the finders report are compared
with each other.
"""
import json, os, random, statistics, subprocess, sys, tempfile, time

ROUNDS = {"warm": 7, "cold": 3}


def make(folder):
    dice = random.Random(4)
    number = 0

    def write(content, *pieces):
        nonlocal number
        place = os.path.join(folder, f"d{dice.randrange(60):02}", f"e{dice.randrange(8)}")
        os.makedirs(place, exist_ok=True)
        with open(os.path.join(place, f"file {number:05}.bin"), "wb") as file:
            file.write(content)
            for piece in pieces:
                file.write(piece)
        number += 1

    def length(low, high):
        return int(low * (high / low) ** dice.random())

    for _ in range(2300):  # a size of their own, mostly
        write(dice.randbytes(length(60_000, 900_000)))
    for _ in range(650):  # copies
        content = dice.randbytes(length(60_000, 2_000_000))
        for _ in range(dice.choice([2, 2, 2, 3, 5])):
            write(content)
    for _ in range(6):  # large copies
        content = dice.randbytes(length(20_000_000, 50_000_000))
        write(content)
        write(content)
    for _ in range(120):  # equal sizes
        size = length(60_000, 900_000)
        for _ in range(8):
            write(dice.randbytes(size))
    for _ in range(250):  # equal first 64 KiB
        size = length(100_000, 900_000)
        head = dice.randbytes(65536)
        for _ in range(2):
            write(head, dice.randbytes(size - 65536))
    for _ in range(100):  # different in the last byte only
        content = dice.randbytes(length(100_000, 1_500_000))
        for last in (b"a", b"b", b"b"):
            write(content, last)
    os.sync()


def finders(folder, programs):
    """Name, command, and how to read the sets from its output."""
    report = os.path.join(tempfile.gettempdir(), "rmlint.json")
    return [
        ("DuplicateScanner", [programs + "/FindDuplicates", folder], sets_of_scanner),
        ("bare comparison", [programs + "/BareComparison", folder], None),
        ("jdupes", ["jdupes", "-r", "-q", folder], sets_of_blocks),
        ("fdupes", ["fdupes", "-r", "-q", folder], sets_of_blocks),
        ("rmlint", ["rmlint", "-T", "df", "-o", "json:" + report, folder], lambda _: sets_of_report(report)),
    ]


def sets_of_scanner(output):
    sets = {}
    for line in output.splitlines():
        path, reason = line.split("\t")
        keeper = reason.removeprefix("Identical to ").removesuffix(" (kept)")
        sets.setdefault(keeper, {keeper}).add(path)
    return frozenset(map(frozenset, sets.values()))


def sets_of_blocks(output):
    return frozenset(frozenset(block.split("\n")) for block in output.strip().split("\n\n"))


def sets_of_report(report):
    sets = {}
    with open(report) as file:
        for entry in json.load(file):
            if entry.get("type") == "duplicate_file":
                sets.setdefault(entry["checksum"], set()).add(entry["path"])
    return frozenset(map(frozenset, sets.values()))


def timed(command, output=subprocess.DEVNULL):
    """Seconds, processor seconds and peak memory in MiB."""
    begun = time.perf_counter()
    child = subprocess.Popen(command, stdout=output, stderr=subprocess.DEVNULL)
    _, _, usage = os.wait4(child.pid, 0)
    seconds = time.perf_counter() - begun
    return seconds, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024


def forget_cache():
    os.sync()
    with open("/proc/sys/vm/drop_caches", "w") as file:
        file.write("3")


def compare(title, contestants, rounds, before=lambda: None):
    figures = {name: [] for name, _ in contestants}
    for _ in range(rounds):
        for name, command in contestants:
            before()
            figures[name].append(timed(command))
    ours = statistics.median(f[0] for f in figures[contestants[0][0]])
    print(f"\n{title}, medians of {rounds} rounds in turn\n")
    print("| | seconds | processor seconds | peak MiB | first / this |\n|---|---:|---:|---:|---:|")
    for name, measured in figures.items():
        seconds, processor, memory = (statistics.median(column) for column in zip(*measured))
        print(f"| {name} | {seconds:.3f} | {processor:.3f} | {memory:.0f} | {ours / seconds:.2f} |", flush=True)


def run(folder, programs):
    folder = os.path.realpath(folder)
    all_finders = finders(folder, programs)
    answers = {name: read(subprocess.run(command, capture_output=True, text=True).stdout)
               for name, command, read in all_finders if read}
    reference = answers.pop("DuplicateScanner")
    print(f"{len(reference)} sets, {sum(map(len, reference)) - len(reference)} copies;",
          ", ".join(f"{name}: {'same' if sets == reference else 'OTHER'} sets" for name, sets in answers.items()))
    commands = [(name, command) for name, command, _ in all_finders]
    largest = max((os.path.join(place, name) for place, _, names in os.walk(folder) for name in names),
                  key=os.path.getsize)
    hashes = [("Hasher64", [programs + "/HashFile", largest]), ("openssl", ["openssl", "dgst", "-sha256", largest])]
    compare("Duplicates, warm", commands, ROUNDS["warm"])
    compare(f"Hash of {os.path.getsize(largest) / 1e6:.0f} MB, warm", hashes, ROUNDS["warm"])
    if os.geteuid() == 0:
        compare("Duplicates, cold", commands, ROUNDS["cold"], forget_cache)
        compare("Hash, cold", hashes, ROUNDS["cold"], forget_cache)


if __name__ == "__main__":
    {"make": make, "run": run}[sys.argv[1]](*sys.argv[2:])
