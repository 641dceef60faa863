#include "CleanerCore/Files/JSONStore.h"

#include "CleanerCore/Platform/FileContent.h"
#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Support/PathText.h"

#include <cerrno>

namespace loftmere {

namespace {

constexpr int64_t largestSettings = int64_t{16} << 20;

// Whether certainly no file is there. Where it is missing, the lowest of its folders that exists tells: if
// that is a link which leads nowhere, as to a volume that is offline, the file may be behind it.
bool isAbsent(const std::string& file) {
    if (linkStatus(file)) return false;
    for (std::string path = file; !path.empty(); path = parentPath(path)) {
        const auto status = targetStatus(path);
        if (status) return true;
        const bool isMissing = status.error() == ENOENT || status.error() == ENOTDIR;
        if (!isMissing || linkStatus(path)) return false;
    }
    return true;
}

} // namespace

std::optional<Json> JSONStore::loadJson(const std::string& path, int64_t limit) {
    const auto text = readFile(path, limit);
    if (!text) return std::nullopt;
    return parseJson(*text);
}

Status JSONStore::saveJson(const Json& value, const std::string& path) {
    auto text = writeJson(value, JsonStyle::pretty);
    if (!text) return failed(std::move(text.error()));
    if (auto made = createDirectories(parentPath(path)); !made) return made;
    return replaceFile(path, *text);
}

Result<AppConfig> ConfigStore::read() const {
    if (auto config = JSONStore::load<AppConfig>(file_, largestSettings)) return *std::move(config);
    if (isAbsent(file_)) return AppConfig{};
    return failed(Failure::saying("the settings cannot be read"));
}

Status ConfigStore::save(const AppConfig& config) const {
    return JSONStore::save(config, file_);
}

} // namespace loftmere
