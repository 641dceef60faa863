#include "CleanerCore/Platform/RegularFile.h"
#include "CleanerCore/Platform/linux/MountInfo.h"
#include "CleanerCore/Records/AppConfig.h"
#include "CleanerCore/Removal/AuditLog.h"
#include "CleanerCore/Removal/Quarantine/QuarantineFolder.h"
#include "CleanerCore/Scanning/Photos/Thumbnail.h"
#include "CleanerCore/Scanning/Scanners/ForeignText.h"
#include "CleanerCore/Support/PropertyList.h"
#include "CleanerCore/Support/RecordCodec.h"
#include "CleanerCore/Support/Text.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

// One program for the parsers of all foreign text: `fuzz NAME` and libFuzzer's own arguments. scripts/fuzz
// runs it. Each target takes any bytes and must neither crash nor break what it requires here.

namespace {

using namespace loftmere;

void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "not so: %s\n", what);
    std::abort();
}

// What is read is written again in the same way, and read again is the same.
template <class T> void keepsItsMeaning(std::string_view text) {
    const auto json = parseJson(text);
    const auto value = json ? JsonCodec<T>::decode(*json) : std::nullopt;
    if (!value) return;
    const auto again = JsonCodec<T>::decode(JsonCodec<T>::encode(*value));
    require(again == value, "a record that was written and read again is the same");
}

void propertyList(std::string_view text) {
    (void)PropertyList::parse(std::string(text));
    (void)ForeignText::backupInfo(std::string(text));
}

// A file with this content, the same one each time.
const RegularFile& pictureFile(std::string_view text) {
    static const std::string path = "/tmp/loftmere-fuzz-" + std::to_string(::getpid()) + ".jpg";
    static const int file = ::open(path.c_str(), O_CREAT | O_RDWR | O_TRUNC | O_CLOEXEC, 0600);
    static const auto opened = RegularFile::open(path);
    static const bool isNameless = ::unlink(path.c_str()) == 0;
    const auto size = static_cast<ssize_t>(text.size());
    require(isNameless && ::ftruncate(file, 0) == 0 && ::pwrite(file, text.data(), text.size(), 0) == size,
            "the picture can be written");
    return *opened;
}

// The whole way of a JPEG file, with the first scan of a progressive one.
void jpeg(std::string_view text) {
    const auto thumbnail = jpegThumbnail(pictureFile(text), nullptr);
    if (!thumbnail) return;
    const GreyImage& image = thumbnail->image;
    require(image.width >= 1 && image.height >= 1 && std::max(image.width, image.height) <= thumbnailSide,
            "a thumbnail is small");
    require(thumbnail->pixelCount <= mostPixels, "vast pictures are refused");
}

// Our own reading and libjpeg's.
void jpegMeans(std::string_view text) {
    const RegularFile& file = pictureFile(text);
    const auto own = jpegThumbnail(file, nullptr, JpegMeans::read);
    const auto library = jpegThumbnail(file, nullptr, JpegMeans::leave);
    require(own.has_value() == library.has_value(), "both read a picture or neither");
    require(own ? own->image == library->image : own.error() == library.error(), "both read the same");
}

void exif(std::string_view text) {
    const int orientation = exifOrientation({reinterpret_cast<const uint8_t*>(text.data()), text.size()});
    require(orientation >= uprightOrientation && orientation <= lastOrientation,
            "an orientation is one of 8");
}

void journal(std::string_view text) {
    const QuarantineJournal parsed = QuarantineJournal::parse(text);
    const auto lines = static_cast<size_t>(std::ranges::count(text, '\n')) + 1;
    require(parsed.arriving.size() + parsed.restoring.size() <= lines, "a line says one thing");
}

void manifest(std::string_view text) {
    keepsItsMeaning<QuarantineSession>(text);
}

void settings(std::string_view text) {
    keepsItsMeaning<AppConfig>(text);
}

void simctl(std::string_view text) {
    (void)ForeignText::simulatorIdentifiers(std::string(text));
}

void docker(std::string_view text) {
    (void)ForeignText::reclaimableSizes(std::string(text));
    (void)ForeignText::parseSize(text);
}

void mountInfo(std::string_view text) {
    const auto lines = static_cast<size_t>(std::ranges::count(text, '\n')) + 1;
    require(mountPointsIn(std::string(text)).size() <= lines, "a line names one mount");
}

void auditLine(std::string_view text) {
    const auto entry = AuditEntry::ofLine(text);
    const int64_t freed = freedBytesOf(text);
    require(freed == 0 || (entry && entry->success && entry->size == freed),
            "the quick reader of the log says what the slow one says");
}

// Text that goes to a shell comes out of it as it was: between the outer quotes there is no quote but '\''.
void quoting(std::string_view text) {
    std::string inner = shellQuoted(text);
    require(inner.size() >= 2 && inner.starts_with('\'') && inner.ends_with('\''), "a word is in quotes");
    inner = inner.substr(1, inner.size() - 2);
    constexpr std::string_view escaped = "'\\''";
    for (size_t at = inner.find('\''); at != std::string::npos; at = inner.find('\'', at + 1)) {
        require(inner.compare(at, escaped.size(), escaped) == 0, "a quote within a word is escaped");
        inner.replace(at, escaped.size(), "'");
    }
    require(inner == text, "a quoted word is the word");
    const std::string script = appleScriptQuoted(text);
    for (size_t at = 1; at + 1 < script.size(); ++at) {
        if (script[at] == '\\')
            require(++at + 1 < script.size(), "nothing escapes the closing quote");
        else
            require(script[at] != '"', "a quote within a string is escaped");
    }
    require(isValidUTF8(printable(text)), "what is shown is valid");
}

constexpr struct {
    std::string_view name;
    void (*run)(std::string_view);
} targets[] = {
    {"PropertyList", propertyList},
    {"Jpeg", jpeg},
    {"JpegMeans", jpegMeans},
    {"Exif", exif},
    {"Journal", journal},
    {"Manifest", manifest},
    {"Settings", settings},
    {"Simctl", simctl},
    {"Docker", docker},
    {"MountInfo", mountInfo},
    {"AuditLine", auditLine},
    {"Quoting", quoting},
};

const auto* chosen = std::end(targets);

} // namespace

extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments) {
    if (*count > 1)
        chosen = std::ranges::find(targets, std::string_view((*arguments)[1]),
                                   [](const auto& t) { return t.name; });
    if (chosen == std::end(targets)) {
        for (const auto& target : targets) std::printf("%s\n", target.name.data());
        std::exit(*count > 1 ? 2 : 0);
    }
    (*arguments)[1] = (*arguments)[0]; // libFuzzer sees its own arguments alone
    ++*arguments;
    --*count;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    chosen->run({reinterpret_cast<const char*>(data), size});
    return 0;
}
