#!/bin/sh
# The project scan beside the bare system calls: benchmarks/projects.sh [ROUNDS]
#
# Makes 100,000 folders of projects below build/ (kept for the next time), then times the scanner and a bare walk of
# the folders that it must list, in turn, with everything in the kernel's caches. Prints a Markdown table.
# Wants the tools that benchmarks/prepare builds.
set -eu
cd "$(dirname "$0")/.."
rounds=${1:-9}
tools=build/bench/bin
home=$PWD/build/projects-home

if [ ! -x $tools/Rounds ]; then
    echo "build the tools first: benchmarks/prepare" >&2
    exit 2
fi
if [ ! -x $tools/BareProjectWalk ]; then
    echo "the bare walk knows Linux's system calls only" >&2
    exit 2
fi
if [ ! -e "$home.done" ]; then
    rm -rf "$home"
    echo "making $home: 100,000 folders" >&2
    $tools/MakeProjects "$home" 100000
    touch "$home.done"
fi
$tools/Rounds "$rounds" "" "project scan" "$tools/ScanCategory '$home' projectArtifacts" \
    "bare walk, 1 thread" "$tools/BareProjectWalk '$home/Projects'"
