#pragma once

#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace loftmere::test {

// Many ways to write one path, all of which lead the system to the same place. `detours` are paths from the
// top that lead to a folder on the way (a link to it, say), each with what it stands for.
class PathSpellings {
public:
    struct Detour {
        std::string written;
        std::string meant;
    };

    explicit PathSpellings(std::vector<Detour> detours) : detours_(std::move(detours)) {}

    std::string next(std::string path) {
        path = startedElsewhere(std::move(path));
        std::string spelled;
        for (size_t at = path.starts_with('~') ? 1 : 0; at < path.size();) {
            const size_t end = std::min(path.find('/', at + 1), path.size());
            spelled += separator(at == 0);
            spelled += std::string_view(path).substr(at + 1, end - at - 1);
            at = end;
        }
        if (path.starts_with('~')) spelled.insert(0, "~");
        for (uint32_t i = pick(3); i > 0; --i) spelled += '/';
        return spelled;
    }

private:
    std::string startedElsewhere(std::string path) {
        const Detour& detour = detours_[pick(static_cast<uint32_t>(detours_.size()))];
        if (path.starts_with(detour.meant + "/")) path.replace(0, detour.meant.size(), detour.written);
        return path;
    }

    std::string separator(bool first) {
        static const std::vector<std::string> anywhere{"/", "/", "/", "//", "/./", "///", "/.//./"};
        if (first && pick(3) == 0) return "/../" + std::string(pick(3), '/');
        return anywhere[pick(static_cast<uint32_t>(anywhere.size()))];
    }

    uint32_t pick(uint32_t below) { return static_cast<uint32_t>(random_() % below); }

    std::vector<Detour> detours_;
    std::mt19937 random_{20260101};
};

} // namespace loftmere::test
