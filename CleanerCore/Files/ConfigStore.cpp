#include "CleanerCore/Files/ConfigStore.h"

#include "CleanerCore/Files/JSONStore.h"

namespace loftmere {

AppConfig ConfigStore::load() const {
    return JSONStore::load<AppConfig>(file_).value_or(AppConfig{});
}

Status ConfigStore::save(const AppConfig& config) const {
    return JSONStore::save(config, file_);
}

} // namespace loftmere
