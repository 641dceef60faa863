#include "CleanerCore/Files/JSONStore.h"

#include "CleanerCore/Platform/FileContent.h"
#include "CleanerCore/Support/PathText.h"

namespace loftmere::JSONStore {

std::optional<Json> loadJson(const std::string& path, int64_t limit) {
    const auto text = readFile(path, limit);
    if (!text) return std::nullopt;
    return parseJson(*text);
}

Status saveJson(const Json& value, const std::string& path) {
    auto text = writeJson(value, JsonStyle::pretty);
    if (!text) return failed(std::move(text.error()));
    if (auto made = createDirectories(parentPath(path)); !made) return made;
    return replaceFile(path, *text);
}

} // namespace loftmere::JSONStore
