#!/usr/bin/env python3
"""The duplicate scanner and its hash beside their peers: benchmarks/duplicates.py [ROUNDS [COLD_ROUNDS]]

Makes a corpus of about 2.7 GB in 5,868 files below build/ (kept for the next time), proves that all finders report the
same sets, then times them and the hash in turn, everything being in the kernel's caches; for root on Linux then with
the caches dropped before each command. Prints Markdown tables.
Wants the tools that benchmarks/prepare builds.
"""
import json, os, random, shlex, subprocess, sys

TOOLS = "build/bench/bin/"
CORPUS = "build/duplicates-corpus"
REPORT = "build/duplicates-rmlint.json"
FORGET = "sync; echo 3 > /proc/sys/vm/drop_caches"


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
    for size in (20_000_000, 30_000_000, 100_000_000):  # large copies
        content = dice.randbytes(size)
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


# Name, command, and how to read the sets from its output.
FINDERS = [
    ("DuplicateScanner", [TOOLS + "FindDuplicates", CORPUS], lambda output: sets_of_scanner(output)),
    ("bare comparison", [TOOLS + "BareComparison", CORPUS], None),
    ("jdupes -r -q", ["jdupes", "-r", "-q", CORPUS], lambda output: sets_of_blocks(output)),
    ("fdupes -r -q", ["fdupes", "-r", "-q", CORPUS], lambda output: sets_of_blocks(output)),
    ("rmlint -T df", ["rmlint", "-T", "df", "-o", "json:" + REPORT, CORPUS], lambda _: sets_of_report()),
]


def sets_of_scanner(output):
    sets = {}
    for line in output.splitlines():
        path, reason = line.split("\t")
        keeper = reason.removeprefix("Identical to ").removesuffix(" (kept)")
        sets.setdefault(keeper, {keeper}).add(path)
    return frozenset(map(frozenset, sets.values()))


def sets_of_blocks(output):
    return frozenset(frozenset(map(os.path.realpath, block.split("\n"))) for block in output.strip().split("\n\n"))


def sets_of_report():
    sets = {}
    with open(REPORT) as file:
        for entry in json.load(file):
            if entry.get("type") == "duplicate_file":
                sets.setdefault(entry["checksum"], set()).add(os.path.realpath(entry["path"]))
    return frozenset(map(frozenset, sets.values()))


def prove_same_sets():
    answers = {name: read(subprocess.run(command, capture_output=True, text=True, check=True).stdout)
               for name, command, read in FINDERS if read}
    ours = answers["DuplicateScanner"]
    for name, sets in answers.items():
        if sets != ours:
            sys.exit(f"{name} finds other sets")
    print(f"{len(ours)} sets, {sum(map(len, ours)) - len(ours)} copies, the same for all")


def take_turns(title, before, rounds, contenders):
    print(f"\n{title}, {rounds} rounds:\n", flush=True)
    arguments = [word for name, command in contenders for word in (name, shlex.join(command))]
    subprocess.run([TOOLS + "Rounds", str(rounds), before, *arguments], check=True)


def main(rounds=7, cold_rounds=5):
    os.chdir(os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
    if not os.path.exists(CORPUS + ".done"):
        make(CORPUS)
        open(CORPUS + ".done", "w").close()
    prove_same_sets()
    finders = [(name, command) for name, command, _ in FINDERS]
    files = (os.path.join(place, name) for place, _, names in os.walk(CORPUS) for name in names)
    largest = max(files, key=os.path.getsize)
    hashes = [("Hasher64", [TOOLS + "HashFile", largest]), ("openssl", ["openssl", "dgst", "-sha256", largest])]
    take_turns("Duplicates, warm", "", rounds, finders)
    take_turns(f"Hash of {os.path.getsize(largest) / 1e6:.0f} MB, warm", "", rounds, hashes)
    if os.geteuid() == 0 and sys.platform == "linux":
        take_turns("Duplicates, cold", FORGET, cold_rounds, finders)
        take_turns("Hash, cold", FORGET, cold_rounds, hashes)


if __name__ == "__main__":
    main(*map(int, sys.argv[1:]))
