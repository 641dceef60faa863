#pragma once

#include "CleanerCore/Safety/RemovalPermit.h"
#include "CleanerCore/Support/Date.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace loftmere::test {

// A home folder of its own for one test, removed at its end whatever it holds.
class TemporaryHome {
public:
    enum class On { disk, memory };

    // In memory, where there is such a place, nothing waits for a disk.
    explicit TemporaryHome(On place = On::disk);
    ~TemporaryHome();
    TemporaryHome(const TemporaryHome&) = delete;
    TemporaryHome& operator=(const TemporaryHome&) = delete;

    const std::string& path() const { return path_; }
    Paths paths() const { return Paths(path_); }
    std::string at(std::string_view relative) const;

    // Each makes what it needs above and answers the path. A relative path stands below the home.
    std::string folder(std::string_view relative) const;
    std::string file(std::string_view relative, std::string_view content) const;
    // A file that really takes `bytes` on disk (rounded up to whole blocks by the file system).
    std::string fileOfSize(std::string_view relative, int64_t bytes) const;
    std::string link(std::string_view relative, const std::string& target) const;

    // The item as the gate and the policy let it go; a failure when they do not.
    Result<ClearedItem> cleared(std::string_view relative) const;

    // Sets access and modification date of the item itself.
    void setDates(std::string_view relative, Date date) const;
    void setAgeDays(std::string_view relative, double days) const;

private:
    std::string path_;
};

} // namespace loftmere::test
