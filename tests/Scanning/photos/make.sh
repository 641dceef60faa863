#!/bin/bash
# Makes the pictures of this folder anew with the vips command line (libvips-tools, with HEIC), in the folder given, by
# default this one. They show one scene, in every kind that cameras and programs write, but for other.jpg.
set -euo pipefail
out=$(realpath "${1:-$(dirname "$0")}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

# A scene of soft shapes: three colours of noise, magnified.
scene() { # name seed
    for band in 1 2 3; do
        vips perlin "$1$band.v" 640 480 --cell-size $((90 + 30 * band)) --seed $(($2 + band))
        vips linear "$1$band.v" "$1$band-l.v" 120 128
    done
    vips bandjoin "$1"'1-l.v '"$1"'2-l.v '"$1"'3-l.v' "$1-f.v"
    vips cast "$1-f.v" "$1-c.v" uchar
    vips copy "$1-c.v" "$1.v" --interpretation srgb
}
scene scene 10
scene other 77

# Puts an Exif block with an orientation into a JPEG file, in one byte order or the other.
orient() { # file orientation
    python3 - "$1" "$2" <<'PYTHON'
import struct, sys
path, value = sys.argv[1], int(sys.argv[2])
order, mark = ("<", b"II") if value % 2 else (">", b"MM")
tiff = mark + struct.pack(order + "HIHHHIHHHHIHHI", 42, 8, 2, 0x0100, 3, 1, 7, 0, 0x0112, 3, 1, value, 0, 0)
block = b"Exif\0\0" + tiff
data = open(path, "rb").read()
open(path, "wb").write(data[:2] + b"\xff\xe1" + struct.pack(">H", len(block) + 2) + block + data[2:])
PYTHON
}

jpeg() { vips jpegsave "$1" "$out/$2" --Q 50 --strip "${@:3}"; }
jpeg scene.v photo.jpg
jpeg other.v other.jpg
jpeg scene.v progressive.jpg --interlace
jpeg scene.v progressive444.jpg --interlace --subsample-mode off
vips colourspace scene.v grey.v b-w
jpeg grey.v grey.jpg
jpeg grey.v progressive-grey.jpg --interlace
vips icc_transform scene.v inks.v cmyk --input-profile srgb
vips jpegsave inks.v "$out/cmyk.jpg" --Q 50 --strip
vips jpegsave inks.v "$out/cmyk-progressive.jpg" --Q 50 --strip --interlace

vips resize scene.v half.v 0.5
jpeg half.v half.jpg
vips resize scene.v small.v 0.15

vips flip half.v turned2.v horizontal
vips rot half.v turned3.v d180
vips flip half.v turned4.v vertical
vips rot half.v quarter.v d90
vips flip quarter.v turned5.v horizontal
vips rot half.v turned6.v d270
vips flip quarter.v turned7.v vertical
vips copy quarter.v turned8.v
vips copy half.v turned1.v
for orientation in 1 2 3 4 5 6 7 8; do
    jpeg turned$orientation.v turned$orientation.jpg
    orient "$out/turned$orientation.jpg" $orientation
done

vips pngsave small.v "$out/color.png" --compression 9 --strip
vips pngsave small.v "$out/interlaced.png" --compression 9 --interlace --strip
vips pngsave small.v "$out/palette.png" --palette --strip
vips colourspace small.v deep.v rgb16
vips pngsave deep.v "$out/deep.png" --compression 9 --bitdepth 16 --strip
vips colourspace small.v smallgrey.v b-w
vips pngsave smallgrey.v "$out/grey.png" --compression 9 --strip
vips bandjoin_const small.v alpha.v 255
vips webpsave alpha.v "$out/alpha.webp" --lossless --strip
vips webpsave scene.v "$out/photo.webp" --Q 50 --strip
vips heifsave scene.v "$out/photo.heic" --Q 40 --compression hevc --strip
vips tiffsave small.v "$out/photo.tiff" --compression lzw --predictor horizontal --strip
vips tiffsave deep.v "$out/deep-tiled.tif" --compression deflate --tile --tile-width 64 --tile-height 64 --strip
vips colourspace small.v smallinks.v cmyk
vips tiffsave smallinks.v "$out/cmyk.tif" --compression lzw --strip
vips gifsave small.v "$out/photo.gif"

# Files that claim more than they hold: the sides of a picture, or the length of its colour profile.
python3 - "$out" <<'PYTHON'
import struct, sys, zlib

def load(name):
    return open(f"{sys.argv[1]}/{name}", "rb").read()

def store(name, content):
    open(f"{sys.argv[1]}/{name}", "wb").write(content)

def png(name, side):
    data = bytearray(load(name))
    data[16:24] = struct.pack(">II", side, side)
    data[29:33] = struct.pack(">I", zlib.crc32(data[12:29]))
    return data

def jpeg(name, marker):
    data = bytearray(load(name))
    frame = data.index(marker)
    data[frame + 5:frame + 9] = struct.pack(">HH", 65500, 65500)
    return data, frame

# A grey picture of 16 by 16 pixels.
def tiff(length):
    tags = [(256, 4, 1, 16), (257, 4, 1, 16), (258, 4, 1, 8), (259, 4, 1, 1), (262, 4, 1, 1), (273, 4, 1, 150),
            (277, 4, 1, 1), (278, 4, 1, 16), (279, 4, 1, 256), (34675, 7, length, 150)]
    start = b"MM\0*" + struct.pack(">IH", 8, len(tags)) + b"".join(struct.pack(">HHII", *tag) for tag in tags)
    return start + bytes(610 - len(start))

store("vast.png", png("color.png", 60000))
store("vast-interlaced.png", png("interlaced.png", 9000))
baseline, frame = jpeg("photo.jpg", b"\xff\xc0")
store("vast.jpg", baseline)
baseline[frame + 1] = 0xC9
store("vast-arithmetic.jpg", baseline)
store("vast-progressive.jpg", jpeg("progressive.jpg", b"\xff\xc2")[0])
store("vast-cmyk.jpg", jpeg("cmyk-progressive.jpg", b"\xff\xc2")[0])
for name, length in (("small", 8), ("large", 700_000_000), ("vast", 1_800_000_000)):
    store(f"{name}-profile.tif", tiff(length))
PYTHON
