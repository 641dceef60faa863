// What the kernel alone takes: BareWalk FOLDER THREADS opens, reads and closes every folder and stats every
// file, and does nothing else. The threads share a list of paths; there is no care for deep trees, races,
// failures or memory.
#include <dirent.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

std::mutex mutex;
std::vector<std::string> folders;
int busy = 0;
int64_t total = 0;

int64_t readFolder(const std::string& path, char* buffer, size_t capacity, std::vector<std::string>& found) {
    int64_t sum = 0;
    const int fd = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    for (ssize_t end = 0; (end = ::getdents64(fd, buffer, capacity)) > 0;) {
        for (ssize_t at = 0; at < end;) {
            const auto* entry = reinterpret_cast<const dirent64*>(buffer + at);
            at += entry->d_reclen;
            const std::string_view name = entry->d_name;
            struct stat status{};
            if (entry->d_type == DT_REG && ::fstatat(fd, entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0)
                sum += status.st_blocks * 512;
            else if (entry->d_type == DT_DIR && name != "." && name != "..")
                found.push_back(path + "/" + entry->d_name);
        }
    }
    ::close(fd);
    return sum;
}

void work() {
    constexpr size_t capacity = 32768;
    std::vector<char> buffer(capacity);
    std::vector<std::string> found;
    int64_t sum = 0;
    std::unique_lock lock(mutex);
    while (!folders.empty() || busy > 0) {
        if (folders.empty()) {
            lock.unlock();
            std::this_thread::yield();
            lock.lock();
            continue;
        }
        const std::string path = std::move(folders.back());
        folders.pop_back();
        ++busy;
        lock.unlock();
        found.clear();
        sum += readFolder(path, buffer.data(), capacity, found);
        lock.lock();
        for (std::string& subfolder : found) folders.push_back(std::move(subfolder));
        --busy;
    }
    total += sum;
}

} // namespace

int main(int count, char** arguments) {
    if (count != 3) return 2;
    folders.emplace_back(arguments[1]);
    std::vector<std::thread> helpers;
    for (int i = 1; i < std::atoi(arguments[2]); ++i) helpers.emplace_back(work);
    work();
    for (std::thread& helper : helpers) helper.join();
    fmt::print("{}\n", total);
}
