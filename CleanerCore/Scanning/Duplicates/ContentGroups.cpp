#include "CleanerCore/Scanning/Duplicates/ContentGroups.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <string_view>

namespace loftmere {

namespace {

constexpr int64_t firstBlock = 16 * 1024;   // most files of one size differ in it
constexpr int64_t blockLength = 128 * 1024; // two of them stay in the processor's cache

// What is read next at `offset`; from the second block on it ends at a multiple of the block length.
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

// Several names, be it of one file, can make a set.
bool haveSeveralNames(std::span<ComparedFile* const> members) {
    return members.size() > 1 || (members.size() == 1 && members.front()->names().size() > 1);
}

ContentGroups::Set remainingNames(std::span<ComparedFile* const> members) {
    ContentGroups::Set names;
    for (ComparedFile* member : members) {
        member->dropChangedNames();
        names.insert(names.end(), member->names().begin(), member->names().end());
    }
    std::ranges::sort(names); // they point into one list
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

// Reads on until one file is left or all have ended. Even an empty file, and one that has no equal but its
// own other names, must prove that it can be opened.
bool ContentGroups::proveEqual(Alike& alike) {
    do {
        compareBlock(alike);
        if (stopped_ || !haveSeveralNames(alike.members)) return false;
    } while (alike.offset < size_ && alike.members.size() > 1);
    return true;
}

// Keeps those whose next block is that of the first file that can be read.
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

// Files that differ from the first may still be equal to each other. The hash only keeps apart what is
// certainly different, so that many different files cost no more than one more reading of this block.
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
