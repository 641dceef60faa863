// Makes JPEG files that are as laborious to decode as photographs, all of different scenes:
//
//     MakePhotos FOLDER COUNT [camera]
//
// A scene is noise in octaves, coarse to fine with falling strength, as light and surfaces are in nature,
// with the noise of a sensor on top. Sizes run from 1 to 12 megapixels, and every tenth file is progressive.
// With "camera" they are as cameras write them: 12 to 24 megapixels, never progressive, in higher quality,
// half of them with colours at half the height as well as half the width, every third with restart markers.
// The same arguments give the same files.
#include "CleanerCore/Support/Crew.h"

#include <fmt/format.h>
#include <jpeglib.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace {

// Smooth noise: values at the crossings of a grid, in between along straight lines.
class Octave {
public:
    Octave(std::mt19937& random, int width, int height, int cell, float strength)
        : width_(width),
          cell_(cell),
          columns_(width / cell + 2),
          values_(size_t(columns_) * (height / cell + 2)) {
        std::uniform_real_distribution<float> value(-strength, strength);
        for (float& each : values_) each = value(random);
    }

    void addRow(int y, std::vector<float>& row) const {
        const float down = float(y % cell_) / float(cell_);
        const float* above = values_.data() + size_t(y / cell_) * columns_;
        const float* below = above + columns_;
        for (int column = 0; column * cell_ < width_; ++column) {
            const float left = above[column] + (below[column] - above[column]) * down;
            const float right = above[column + 1] + (below[column + 1] - above[column + 1]) * down;
            const float step = (right - left) / float(cell_);
            const int end = std::min(cell_, width_ - column * cell_);
            for (int x = 0; x < end; ++x) row[size_t(column * cell_ + x)] += left + step * float(x);
        }
    }

private:
    int width_;
    int cell_;
    int columns_;
    std::vector<float> values_;
};

class Scene {
public:
    Scene(uint32_t seed, int width, int height) : random_(seed), width_(width) {
        const int longer = std::max(width, height);
        for (int part = 4; part <= longer / 3; part *= 2) {
            light_.emplace_back(random_, width, height, std::max(2, longer / part),
                                120.0F * std::pow(float(part), -0.45F));
        }
        for (auto* color : {&blue_, &red_}) color->emplace_back(random_, width, height, longer / 9, 40.0F);
    }

    // One row of brightness and two of colour, as JPEG has them.
    void row(int y, std::vector<uint8_t>& pixels) {
        std::vector<float> light(size_t(width_), 128), blue(size_t(width_), 128), red(size_t(width_), 128);
        for (const Octave& octave : light_) octave.addRow(y, light);
        for (const Octave& octave : blue_) octave.addRow(y, blue);
        for (const Octave& octave : red_) octave.addRow(y, red);
        for (size_t x = 0; x < light.size(); ++x) {
            const float noise = float(random_() % 17) - 8;
            const float values[] = {light[x] + noise, blue[x], red[x]};
            for (size_t i = 0; i < 3; ++i) pixels[x * 3 + i] = uint8_t(std::clamp(values[i], 0.0F, 255.0F));
        }
    }

private:
    std::mt19937 random_;
    int width_;
    std::vector<Octave> light_, blue_, red_;
};

struct Photo {
    int width;
    int height;
    int quality;
    bool isProgressive = false;
    bool hasHalfTheColorRows = true;
    int rowsBetweenRestarts = 0; // in units of 8 or 16 pixels; 0 for none
};

Photo anyPhoto(std::mt19937& random, uint32_t number, bool fromCamera) {
    const double share = double(random() % 1000) / 1000;
    const double megapixels = fromCamera ? 12 + 12 * share : 1 + 11 * std::pow(share, 1.2);
    const double aspect = random() % 2 == 0 ? 4.0 / 3 : 2.0 / 3;
    const int width = int(std::sqrt(megapixels * 1e6 * aspect));
    Photo photo{.width = width, .height = int(width / aspect), .quality = 80 + int(random() % 13)};
    if (fromCamera) {
        photo.quality += 5;
        photo.hasHalfTheColorRows = number % 2 == 0;
        photo.rowsBetweenRestarts = number % 3 == 0 ? 1 : 0;
    } else {
        photo.isProgressive = number % 10 == 0;
    }
    return photo;
}

void writePhoto(const std::string& path, uint32_t number, bool fromCamera) {
    std::mt19937 random(number);
    const Photo photo = anyPhoto(random, number, fromCamera);
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) std::exit(1);

    jpeg_compress_struct encoder{};
    jpeg_error_mgr errors{};
    encoder.err = jpeg_std_error(&errors);
    jpeg_create_compress(&encoder);
    jpeg_stdio_dest(&encoder, file);
    encoder.image_width = JDIMENSION(photo.width);
    encoder.image_height = JDIMENSION(photo.height);
    encoder.input_components = 3;
    encoder.in_color_space = JCS_YCbCr;
    jpeg_set_defaults(&encoder);
    jpeg_set_quality(&encoder, photo.quality, TRUE);
    encoder.restart_in_rows = photo.rowsBetweenRestarts;
    if (!photo.hasHalfTheColorRows) encoder.comp_info[0].v_samp_factor = 1;
    if (photo.isProgressive) jpeg_simple_progression(&encoder);
    jpeg_start_compress(&encoder, TRUE);
    Scene scene(number, photo.width, photo.height);
    std::vector<uint8_t> pixels(size_t(photo.width) * 3);
    for (int y = 0; y < photo.height; ++y) {
        scene.row(y, pixels);
        JSAMPROW row = pixels.data();
        jpeg_write_scanlines(&encoder, &row, 1);
    }
    jpeg_finish_compress(&encoder);
    jpeg_destroy_compress(&encoder);
    std::fclose(file);
}

} // namespace

int main(int count, char** arguments) {
    const bool fromCamera = count == 4 && std::string(arguments[3]) == "camera";
    if (count != 3 && !fromCamera) return 2;
    const std::string folder = arguments[1];
    loftmere::concurrentPerform(size_t(std::atoi(arguments[2])), [&](size_t i) {
        writePhoto(fmt::format("{}/{:04}.jpg", folder, i), uint32_t(i), fromCamera);
    });
}
