#include "CleanerCore/Files/JSONStore.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/FileContent.h"
#include "CleanerCore/Support/PathText.h"

namespace loftmere {

namespace {

constexpr int64_t largestSettings = int64_t{16} << 20;

std::optional<AppConfig> readSettings(const std::string& file) {
    return JSONStore::load<AppConfig>(file, largestSettings);
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

AppConfig ConfigStore::load() const {
    return readSettings(file_).value_or(AppConfig{});
}

bool ConfigStore::isDamaged() const {
    return FS::exists(file_) && !readSettings(file_);
}

Status ConfigStore::save(const AppConfig& config) const {
    return JSONStore::save(config, file_);
}

} // namespace loftmere
