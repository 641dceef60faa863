// The least that proves equality, for a file finder to be measured by: BareComparison FOLDER opens all files
// of one size, reads them in step and compares them with the first of those that are still equal, on two
// threads. No care is taken of anything that may go wrong. Prints the number of copies.
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstring>
#include <filesystem>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace {

class BareComparison {
public:
    void run(const char* folder) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
            struct stat status{};
            if (::lstat(entry.path().c_str(), &status) == 0 && S_ISREG(status.st_mode))
                bySize_[status.st_size].push_back(entry.path());
        }
        std::vector<const std::vector<std::string>*> groups;
        for (auto group = bySize_.rbegin(); group != bySize_.rend(); ++group) {
            if (group->second.size() > 1) groups.push_back(&group->second);
        }
        std::atomic<size_t> next = 0;
        const auto work = [&] {
            for (size_t i = next++; i < groups.size(); i = next++) compareAll(*groups[i]);
        };
        std::thread other(work);
        work();
        other.join();
        fmt::print("{}\n", copies_.load());
    }

private:
    void compareAll(const std::vector<std::string>& paths) {
        std::vector<int> files;
        for (const std::string& path : paths) files.push_back(::open(path.c_str(), O_RDONLY));
        compare(files, 0);
        for (const int file : files) ::close(file);
    }

    void compare(std::vector<int> files, off_t offset) {
        thread_local std::array<char, 131072> model;
        thread_local std::array<char, 131072> other;
        while (files.size() > 1) {
            const size_t wanted = offset == 0 ? 16384 : model.size();
            const ssize_t length = ::pread(files[0], model.data(), wanted, offset);
            if (length == 0) break;
            std::vector<int> equal{files[0]};
            std::vector<int> differing;
            for (size_t i = 1; i < files.size(); ++i) {
                const bool same = ::pread(files[i], other.data(), wanted, offset) == length &&
                                  std::memcmp(model.data(), other.data(), static_cast<size_t>(length)) == 0;
                (same ? equal : differing).push_back(files[i]);
            }
            compare(std::move(differing), offset);
            files = std::move(equal);
            offset += length;
        }
        if (files.size() > 1) copies_ += files.size() - 1;
    }

    std::map<off_t, std::vector<std::string>> bySize_;
    std::atomic<size_t> copies_ = 0;
};

} // namespace

int main(int count, char** arguments) {
    if (count != 2) return 2;
    BareComparison().run(arguments[1]);
}
