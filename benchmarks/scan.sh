#!/bin/sh
# Whole scans beside their parts: benchmarks/scan.sh [ROUNDS [WHOLE_ROUNDS]]
#
# Times, in turn and with everything in the kernel's caches: the start of `loftmere --version`; `loftmere scan systemJunk`
# on a home whose caches hold the tree of walk.sh, beside the walk alone; and `loftmere scan` of a home that holds all
# corpora, beside each of the scanners that have much to do there. Prints Markdown tables.
# Wants the `bench` preset's tools and the corpora that walk.sh, duplicates.py, photos.sh and projects.sh make. For root
# the homes see the corpora through mounts of its own, which end with it; for others they are hard-linked copies.
set -eu
cd "$(dirname "$0")/.."
tools=build/bench/bin
homes=$PWD/build/scan-homes

if [ "$(id -u)" = 0 ] && [ -z "${LOFTMERE_OWN_MOUNTS:-}" ]; then
    exec env LOFTMERE_OWN_MOUNTS=1 unshare -m "$PWD/benchmarks/$(basename "$0")" "$@"
fi
for corpus in walk-tree duplicates-corpus photos projects-home; do
    [ -e build/$corpus.done ] && continue
    echo "build/$corpus is missing: run walk.sh, duplicates.py, photos.sh and projects.sh first" >&2
    exit 2
done

# Shows a corpus below a home, in a folder old enough to be proposed.
place() {
    mkdir -p "$homes/$2"
    if [ -n "${LOFTMERE_OWN_MOUNTS:-}" ]; then
        mount --bind "build/$1" "$homes/$2"
    elif rmdir "$homes/$2" 2>/dev/null; then
        cp -al "build/$1" "$homes/$2"
    fi
    touch -d '2 days ago' "$(dirname "$homes/$2")"
}

place walk-tree caches/Library/Caches/tree/content
place walk-tree whole/Library/Caches/tree/content
place duplicates-corpus whole/Documents/copies
place photos whole/Pictures/photos
place projects-home/Projects whole/Projects
scan="env HOME='$homes/whole' $tools/loftmere scan --json"

printf 'Start, %s rounds:\n\n' $((${1:-9} * 5))
$tools/Rounds $((${1:-9} * 5)) "" "loftmere --version" "$tools/loftmere --version" "/bin/true" "/bin/true"
printf '\nSystem junk, %s rounds:\n\n' "${1:-9}"
$tools/Rounds "${1:-9}" "" "the walk alone" "$tools/MeasureFolder '$homes/caches/Library/Caches/tree/content'" \
    "scan systemJunk --json" "env HOME='$homes/caches' $tools/loftmere scan systemJunk --json"
sh -c "$scan" >/dev/null # brings all of it into memory
printf '\nThe whole, %s rounds:\n\n' "${2:-3}"
$tools/Rounds "${2:-3}" "" "all scanners" "$scan" "userCaches" "$scan userCaches" \
    "projectArtifacts" "$scan projectArtifacts" "largeOldFiles" "$scan largeOldFiles" \
    "duplicates" "$scan duplicates" "similarPhotos" "$scan similarPhotos"
