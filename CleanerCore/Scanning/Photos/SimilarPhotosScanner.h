#pragma once

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Scanning/JunkScanner.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace loftmere {

// Finds photographs that look alike though their bytes differ (exported again, shot in a burst, made
// smaller), keeps the best of each set and proposes the others, as suggestions to be looked at. Holds nothing
// when it is cancelled before all pictures have been looked at: a set that is not complete could propose its
// best member.
class SimilarPhotosScanner : public JunkScanner {
public:
    // Of the files that are looked at, in lower case.
    static constexpr std::array<std::string_view, 8> exts{"jpg",  "jpeg", "png", "heic",
                                                          "heif", "tiff", "tif", "webp"};

    struct Likeness {
        uint64_t hash = 0;      // two pictures look alike when theirs differ in few bits
        int64_t pixelCount = 0; // width times height
        bool operator==(const Likeness&) const = default;
    };

    // What a picture file looks like, standing upright; a final link is followed. Absent when it cannot be
    // decoded, for whatever reason, and when `isCancelled` answers true meanwhile. Any thread; may take
    // seconds for a large picture.
    static std::optional<Likeness> dHash(const std::string& path,
                                         const FS::CancelCheck& isCancelled = nullptr);

    CleanCategory category() const override { return CleanCategory::similarPhotos; }
    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override;
};

} // namespace loftmere
