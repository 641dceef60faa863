#include "CleanerCore/Files/ConfigStore.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Files/JSONStore.h"

namespace loftmere {

AppConfig ConfigStore::load() const {
    return JSONStore::load<AppConfig>(file_).value_or(AppConfig{});
}

bool ConfigStore::isDamaged() const {
    return FS::exists(file_) && !JSONStore::load<AppConfig>(file_);
}

Status ConfigStore::save(const AppConfig& config) const {
    return JSONStore::save(config, file_);
}

} // namespace loftmere
