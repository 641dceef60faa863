#!/bin/sh
# Photographs that look alike, beside the programs that make thumbnails and find likenesses:
#
#     benchmarks/photos.sh make            the corpus below build/, some minutes, kept for the next time
#     benchmarks/photos.sh [ROUNDS]        the likeness check, then the times
#
# The corpus: 1,500 JPEG files of 1 to 12 megapixels, among them 149 encoded again and 149 of half the size by the vips
# program. Timed in turn, everything in the kernel's caches: dHash over all of them on two threads, vipsthumbnail -s 64 on
# two processes, and findimagedupes where it is installed, once, since it is so much slower.
# Wants the tools that benchmarks/prepare builds.
set -eu
cd "$(dirname "$0")/.."
tools=build/bench/bin
photos=build/photos
scenes=1202
copies=149

if [ ! -x $tools/MakePhotos ]; then
    echo "build the tools first: benchmarks/prepare" >&2
    exit 2
fi

make() {
    rm -rf $photos $photos.done
    mkdir -p $photos
    $tools/MakePhotos $photos $scenes
    seq -w 0 $((copies - 1)) | xargs -P2 -I@ sh -c "vips jpegsave $photos/0@.jpg $photos/0@-again.jpg --Q 70
        vips resize $photos/0@.jpg $photos/0@-half.jpg 0.5"
    touch $photos.done
}

# Near-copies stay within 6 bits of their original, pictures of different scenes do not.
checkLikeness() {
    $tools/HashPhotos $photos >$photos.hashes
    python3 - $photos.hashes <<'PYTHON'
import os, sys
hashes = {}
for line in open(sys.argv[1]):
    value, _, path = line.split(maxsplit=2)
    hashes[os.path.basename(path.strip()).removesuffix(".jpg")] = int(value, 16)
scenes = [name for name in hashes if "-" not in name]
copies = [name for name in hashes if "-" in name]
distance = lambda a, b: (hashes[a] ^ hashes[b]).bit_count()
near = [distance(name, name.split("-")[0]) for name in copies]
far = min(distance(a, b) for i, a in enumerate(scenes) for b in scenes[:i])
print(f"{len(hashes)} files read; of {len(copies)} near-copies {sum(d <= 6 for d in near)} are within 6 bits of their "
      f"original (at most {max(near)}); different scenes are {far} bits apart or more")
PYTHON
}

[ "${1:-}" = make ] && { make; exit; }
[ -e $photos.done ] || make
rounds=${1:-5}
thumbnails='rm -rf build/photos.thumbnails; mkdir build/photos.thumbnails'
checkLikeness
printf '\n%s rounds:\n\n' "$rounds"
$tools/Rounds "$rounds" "$thumbnails" "dHash, 2 threads" "$tools/HashPhotos $photos" \
    "vipsthumbnail -s 64, 2 processes" \
    "ls $photos/*.jpg | xargs -P2 -n 50 vipsthumbnail -s 64 -o $PWD/build/photos.thumbnails/%s.jpg"
if command -v findimagedupes >/dev/null; then
    printf '\nOne round:\n\n'
    $tools/Rounds 1 "" "dHash, 2 threads" "$tools/HashPhotos $photos" "findimagedupes" "findimagedupes -R $photos"
fi
rm -rf build/photos.thumbnails
