#include "CleanerCore/Files/ConfigStore.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Files/JSONStore.h"

namespace loftmere {

namespace {

constexpr int64_t largestSettings = int64_t{16} << 20;

std::optional<AppConfig> read(const std::string& file) {
    return JSONStore::load<AppConfig>(file, largestSettings);
}

} // namespace

AppConfig ConfigStore::load() const {
    return read(file_).value_or(AppConfig{});
}

bool ConfigStore::isDamaged() const {
    return FS::exists(file_) && !read(file_);
}

Status ConfigStore::save(const AppConfig& config) const {
    return JSONStore::save(config, file_);
}

} // namespace loftmere
