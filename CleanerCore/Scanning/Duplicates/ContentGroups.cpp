#include "CleanerCore/Scanning/Duplicates/ContentGroups.h"

#include "CleanerCore/Platform/RegularFile.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

namespace loftmere {

// One content on disk that is compared with others, under all the names it was found by.
class ComparedFile {
public:
    // `names` lead to one inode and are not empty.
    explicit ComparedFile(std::vector<const ListedFile*> names) : names_(std::move(names)) {}

    // One entry for each inode, in the order of the list. Two paths to a file that has only one name are
    // views of the same entry and not copies, so the later one is left out.
    static std::vector<ComparedFile> oneForEachInode(std::span<const ListedFile* const> files);

    // The names that have led to the file so far.
    const std::vector<const ListedFile*>& names() const { return names_; }

    // Opens the file for good. False when that is no longer possible, or when the file has changed since it
    // was listed.
    bool open();
    bool isOpen() const { return file_.has_value(); }
    void close() { file_.reset(); }

    // Fills the block. False when the file cannot be read or ends too early. A file that is not open is
    // opened for this one call.
    bool read(int64_t offset, std::span<std::byte> block);

    // Drops the names that no longer lead to the file as it was listed.
    void dropChangedNames();

private:
    std::optional<RegularFile> opened();

    std::vector<const ListedFile*> names_;
    std::optional<RegularFile> file_;
};

std::vector<ComparedFile> ComparedFile::oneForEachInode(std::span<const ListedFile* const> files) {
    std::vector<ComparedFile> contents;
    contents.reserve(files.size());
    std::map<std::pair<uint64_t, uint64_t>, size_t> known;
    for (const ListedFile* file : files) {
        const auto [place, isNew] =
            known.try_emplace({file->status.device, file->status.inode}, contents.size());
        if (isNew)
            contents.emplace_back(std::vector{file});
        else if (file->status.links > 1)
            contents[place->second].names_.push_back(file);
    }
    return contents;
}

bool ComparedFile::open() {
    if (!file_) file_ = opened();
    return file_.has_value();
}

bool ComparedFile::read(int64_t offset, std::span<std::byte> block) {
    const std::optional<RegularFile> forThisCall = file_ ? std::nullopt : opened();
    const std::optional<RegularFile>& file = file_ ? file_ : forThisCall;
    return file && file->read(offset, block) == block.size();
}

void ComparedFile::dropChangedNames() {
    std::erase_if(names_, [](const ListedFile* name) {
        const auto now = linkStatus(name->path);
        return !now || !isSameUnchangedFile(*now, name->status);
    });
}

// A name that is gone must not cost the others.
std::optional<RegularFile> ComparedFile::opened() {
    while (!names_.empty()) {
        const ListedFile& name = *names_.front();
        if (auto file = RegularFile::openUnchanged(name.path, name.status)) return file;
        names_.erase(names_.begin());
    }
    return std::nullopt;
}

namespace {

constexpr int64_t firstBlock = 16 * 1024;   // most files of one size differ in it
constexpr int64_t blockLength = 128 * 1024; // two blocks stay in the processor's cache

// How much to read at `offset`. From the second block on, a block ends at a multiple of the block length.
size_t lengthOfBlock(int64_t offset, int64_t size) {
    const int64_t wanted = offset == 0 ? firstBlock : blockLength - offset % blockLength;
    return static_cast<size_t>(std::min(wanted, size - offset));
}

bool areEqual(std::span<const std::byte> a, std::span<const std::byte> b) {
    return a.empty() || std::memcmp(a.data(), b.data(), a.size()) == 0;
}

size_t hashOf(std::span<const std::byte> block) {
    return std::hash<std::string_view>{}({reinterpret_cast<const char*>(block.data()), block.size()});
}

// Several names can make a set, even if they are of one file.
bool haveSeveralNames(std::span<ComparedFile* const> members) {
    return members.size() > 1 || (members.size() == 1 && members.front()->names().size() > 1);
}

ContentGroups::Set remainingNames(std::span<ComparedFile* const> members) {
    ContentGroups::Set names;
    for (ComparedFile* member : members) {
        member->dropChangedNames();
        names.insert(names.end(), member->names().begin(), member->names().end());
    }
    std::ranges::sort(names); // the names point into one list
    return names;
}

} // namespace

ContentGroups::ContentGroups(size_t openFiles, Proceed proceed)
    : freeHandles_(openFiles), proceed_(std::move(proceed)), model_(blockLength), other_(blockLength) {}

std::vector<ContentGroups::Set> ContentGroups::split(std::span<const ListedFile* const> files) {
    if (files.empty()) return {};
    std::vector<ComparedFile> contents = ComparedFile::oneForEachInode(files);
    size_ = files.front()->size();
    Alike all;
    for (ComparedFile& file : contents) all.members.push_back(&file);
    pending_.push_back(std::move(all));

    std::vector<Set> sets;
    while (!pending_.empty()) {
        Alike alike = std::move(pending_.back());
        pending_.pop_back();
        if (!stopped_ && haveSeveralNames(alike.members) && proveEqual(alike)) {
            Set set = remainingNames(alike.members);
            if (set.size() > 1) sets.push_back(std::move(set));
        }
        for (ComparedFile* member : alike.members) release(*member);
    }
    return sets;
}

// Reads on until one file is left or all have ended. Even an empty file, and a file that equals only its own
// other names, must prove that it can be opened.
bool ContentGroups::proveEqual(Alike& alike) {
    do {
        compareBlock(alike);
        if (stopped_ || !haveSeveralNames(alike.members)) return false;
    } while (alike.offset < size_ && alike.members.size() > 1);
    return true;
}

// Keeps the files whose next block equals that of the first file that can be read.
void ContentGroups::compareBlock(Alike& alike) {
    const size_t length = alike.members.size() > 1 ? lengthOfBlock(alike.offset, size_) : 0;
    const std::span model = std::span(model_).first(length);
    const std::span other = std::span(other_).first(length);
    std::vector<ComparedFile*> equal;
    std::vector<Differing> differing;
    for (ComparedFile* file : alike.members) {
        const bool isModel = equal.empty();
        if (!read(*file, alike.offset, isModel ? model : other))
            release(*file);
        else if (isModel || areEqual(model, other))
            equal.push_back(file);
        else
            differing.push_back({file, hashOf(other)});
    }
    setAside(std::move(differing), alike.offset);
    alike.members = std::move(equal);
    alike.offset += static_cast<int64_t>(length);
}

// Files that differ from the first may still be equal to each other. The hash only separates files that
// certainly differ, so that many different files cost no more than reading this block once more.
void ContentGroups::setAside(std::vector<Differing> differing, int64_t offset) {
    std::ranges::stable_sort(differing, {}, &Differing::hash);
    for (auto rest = std::span(differing); !rest.empty();) {
        const auto end =
            std::ranges::find_if(rest, [&](const Differing& d) { return d.hash != rest[0].hash; });
        const auto bucket = rest.first(static_cast<size_t>(end - rest.begin()));
        rest = rest.subspan(bucket.size());
        Alike alike{.members = {}, .offset = offset};
        for (const Differing& d : bucket) alike.members.push_back(d.file);
        pending_.push_back(std::move(alike));
    }
}

bool ContentGroups::read(ComparedFile& file, int64_t offset, std::span<std::byte> block) {
    stopped_ = stopped_ || !proceed_(file.names().front()->path);
    if (stopped_) return false;
    if (!file.isOpen() && freeHandles_ > 0 && file.open()) --freeHandles_;
    return file.read(offset, block);
}

void ContentGroups::release(ComparedFile& file) {
    if (!file.isOpen()) return;
    file.close();
    ++freeHandles_;
}

} // namespace loftmere
