#pragma once

#include "CleanerCore/Platform/posix/FileDescriptor.h"
#include "CleanerCore/Support/Result.h"

#include <string>
#include <string_view>

namespace loftmere {

// A file of lines that only grows. Several processes may append to it at a time.
class AppendFile {
public:
    enum class FinalLink { refuse, follow };

    // Makes the file when it is missing, for the user alone, with its parent folders. Fails for what is no regular file.
    static Result<AppendFile> open(const std::string& path, FinalLink link);

    // Adds whole lines at the end in one write. A line that a crash has left torn is ended first, so that it
    // never swallows what comes after it. On failure a torn line may stay behind.
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
