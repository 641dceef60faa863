// The least that deleting a tree on two threads can cost: one unlinkat for each file by the type that the
// reading of the folder tells, then one for each folder from the last found to the first. Knows no links
// swapped in, no failures and no bounds: BareRemoval PATH.
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

std::mutex lock;
std::condition_variable changed;
std::vector<std::string> folders; // in the order found
std::vector<size_t> waiting;
int busy = 0;

void add(std::string folder) {
    const std::lock_guard guard(lock);
    waiting.push_back(folders.size());
    folders.push_back(std::move(folder));
    changed.notify_one();
}

void emptyFolder(const std::string& path) {
    DIR* stream = ::opendir(path.c_str());
    if (stream == nullptr) return;
    while (const dirent* entry = ::readdir(stream)) {
        if (entry->d_type != DT_DIR)
            ::unlinkat(::dirfd(stream), entry->d_name, 0);
        else if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
            add(path + "/" + entry->d_name);
    }
    ::closedir(stream);
}

void work() {
    std::unique_lock guard(lock);
    while (true) {
        changed.wait(guard, [] { return !waiting.empty() || busy == 0; });
        if (waiting.empty()) break;
        const std::string path = folders[waiting.back()];
        waiting.pop_back();
        ++busy;
        guard.unlock();
        emptyFolder(path);
        guard.lock();
        --busy;
    }
    changed.notify_all();
}

} // namespace

int main(int count, char** arguments) {
    if (count != 2) return 2;
    add(arguments[1]);
    std::thread second(work);
    work();
    second.join();
    for (auto folder = folders.rbegin(); folder != folders.rend(); ++folder) ::rmdir(folder->c_str());
    return ::access(arguments[1], F_OK) == 0 ? 1 : 0;
}
