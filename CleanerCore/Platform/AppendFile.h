#pragma once

#include "CleanerCore/Platform/FileDescriptor.h"
#include "CleanerCore/Support/Result.h"

#include <string>
#include <string_view>

namespace loftmere {

// A file of lines that only grows. Several processes may append to it at the same time.
class AppendFile {
public:
    enum class FinalLink { refuse, follow };

    // Creates a missing file, for the user alone, with its parent folders. Fails for anything but a regular
    // file.
    static Result<AppendFile> open(const std::string& path, FinalLink link);

    // Adds whole lines at the end in one write. A line that a crash has cut off is ended first, so that it
    // never swallows the next one. On failure a torn line may stay behind.
    Status append(std::string_view lines);

    // Puts what was appended on the disk.
    Status sync();

private:
    AppendFile(FileDescriptor fd, std::string path) : fd_(std::move(fd)), path_(std::move(path)) {}

    bool endsInTornLine() const;

    FileDescriptor fd_;
    std::string path_;
};

} // namespace loftmere
