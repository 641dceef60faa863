#!/bin/sh
# Deletes a tree of 100,000 files in turn with rm, a bare loop on two threads and the product, on a journaled ext4 in
# memory, so that the disk's own noise stays away. Needs root for the mount; without it the tree stands in TMPDIR.
#
#     benchmarks/removal.sh [BUILD] [ROUNDS]
set -eu
build=${1:-build/bench}
rounds=${2:-7}
bin=$build/bin
work=$(mktemp -d)
cleanup() {
    umount "$work/disk" 2>/dev/null || true
    umount "$work/memory" 2>/dev/null || true
    rm -rf "$work"
}
trap cleanup EXIT
mkdir "$work/memory" "$work/disk"
if [ "$(id -u)" = 0 ] && mount -t tmpfs -o size=3g none "$work/memory"; then
    truncate -s 2G "$work/memory/image"
    mkfs.ext4 -q -N 300000 "$work/memory/image"
    mount -o loop "$work/memory/image" "$work/disk"
else
    echo "not root: measuring in $work/disk"
fi
tree=$work/disk/tree
"$bin/Rounds" "$rounds" "$bin/MakeTree $tree 2000 100000; sync -f $work/disk" \
    "rm -rf" "rm -rf $tree" \
    "bare loop, two threads" "$bin/BareRemoval $tree" \
    "Ostrel Loftmere" "$bin/RemoveTree $tree"
