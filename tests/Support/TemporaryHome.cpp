#include "tests/Support/TemporaryHome.h"

#include "CleanerCore/Support/PathText.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

extern "C" char** environ; // macOS has no header for it

namespace loftmere::test {

namespace fs = std::filesystem;

namespace {

// Also what may not be read, and trees deeper than paths may be long.
void removePatiently(const std::string& path) {
    const char* script = "chmod -R u+rwX -- \"$0\" 2>/dev/null; rm -rf -- \"$0\"";
    const char* arguments[] = {"sh", "-c", script, path.c_str(), nullptr};
    pid_t child = 0;
    if (::posix_spawn(&child, "/bin/sh", nullptr, nullptr, const_cast<char**>(arguments), environ) != 0)
        return;
    ::waitpid(child, nullptr, 0);
}

} // namespace

TemporaryHome::TemporaryHome(On place) {
    const fs::path memory = "/dev/shm";
    const bool isInMemory = place == On::memory && ::access(memory.c_str(), W_OK) == 0;
    std::string path = ((isInMemory ? memory : fs::temp_directory_path()) / "loftmere-XXXXXX").string();
    if (::mkdtemp(path.data()) == nullptr) std::abort();
    path_ = fs::canonical(path).string();
}

TemporaryHome::~TemporaryHome() {
    std::error_code error;
    fs::remove_all(path_, error);
    if (error) removePatiently(path_);
}

std::string TemporaryHome::at(std::string_view relative) const {
    return relative.starts_with('/') ? std::string(relative) : joinPath(path_, relative);
}

std::string TemporaryHome::folder(std::string_view relative) const {
    fs::create_directories(at(relative));
    return at(relative);
}

std::string TemporaryHome::file(std::string_view relative, std::string_view content) const {
    fs::create_directories(parentPath(at(relative)));
    std::ofstream(at(relative), std::ios::binary) << content;
    return at(relative);
}

std::string TemporaryHome::fileOfSize(std::string_view relative, int64_t bytes) const {
    return file(relative, std::string(static_cast<size_t>(bytes), 'x'));
}

std::string TemporaryHome::link(std::string_view relative, const std::string& target) const {
    fs::create_directories(parentPath(at(relative)));
    fs::create_symlink(target, at(relative));
    return at(relative);
}

Result<ClearedItem> TemporaryHome::cleared(std::string_view relative) const {
    const auto permit = RemovalPermit::ask(paths(), {});
    return permit ? permit->judge(at(relative)).item : failed(permit.error());
}

void TemporaryHome::setDates(std::string_view relative, Date date) const {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(date);
    const timespec stamp{.tv_sec = seconds.time_since_epoch().count(),
                         .tv_nsec = std::chrono::nanoseconds(date - seconds).count()};
    const timespec both[2] = {stamp, stamp};
    ASSERT_EQ(::utimensat(AT_FDCWD, at(relative).c_str(), both, AT_SYMLINK_NOFOLLOW), 0);
}

void TemporaryHome::setAgeDays(std::string_view relative, double days) const {
    setDates(relative, addSeconds(currentDate(), -86400.0 * days));
}

} // namespace loftmere::test
