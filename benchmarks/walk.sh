#!/bin/sh
# The walk beside its peers: benchmarks/walk.sh [ROUNDS [COLD_ROUNDS]]
#
# Makes a tree of 400,000 files in 45,000 folders below build/ (kept for the next time), then times FS.allocatedSize, du,
# gdu and ncdu, as far as they are installed, and the bare system calls on one and two threads, in turn, with everything
# in the kernel's caches; for root on Linux then ours and gdu (else du), the caches dropped before each command. Prints
# Markdown tables.
# Wants the tools that benchmarks/prepare builds.
set -eu
cd "$(dirname "$0")/.."
rounds=${1:-9}
coldRounds=${2:-9}
tools=build/bench/bin
tree=build/walk-tree

if [ ! -x $tools/Rounds ]; then
    echo "build the tools first: benchmarks/prepare" >&2
    exit 2
fi
if [ ! -e $tree.done ]; then
    rm -rf $tree
    echo "making $tree: 400,000 files in 45,000 folders" >&2
    $tools/MakeTree $tree 45000 400000
    touch $tree.done
fi

has() { command -v "$1" >/dev/null; }

# Both time what there is, ours first.
timeWarm() {
    set -- "$rounds" "" "FS.allocatedSize" "$tools/MeasureFolder $tree"
    if [ -x $tools/BareWalk ]; then
        set -- "$@" "bare loop, 2 threads" "$tools/BareWalk $tree 2" "bare loop, 1 thread" "$tools/BareWalk $tree 1"
    fi
    set -- "$@" "du -s" "du -s $tree"
    if has gdu; then set -- "$@" "gdu -n -p -s" "gdu -n -p -c -s $tree"; fi
    if has ncdu; then set -- "$@" "ncdu -0 -o" "ncdu -0 -o /dev/null $tree"; fi
    $tools/Rounds "$@"
}

timeCold() {
    set -- "$coldRounds" "sync; echo 3 >/proc/sys/vm/drop_caches" "FS.allocatedSize" "$tools/MeasureFolder $tree"
    if has gdu; then set -- "$@" "gdu -n -p -s" "gdu -n -p -c -s $tree"; else set -- "$@" "du -s" "du -s $tree"; fi
    $tools/Rounds "$@"
}

printf 'Warm, %s rounds:\n\n' "$rounds"
timeWarm
if [ "$(id -u)" = 0 ] && [ -w /proc/sys/vm/drop_caches ] && [ "$coldRounds" -gt 0 ]; then
    printf '\nCold, %s rounds:\n\n' "$coldRounds"
    timeCold
fi
