#include "CleanerCore/Removal/AuditLog.h"

#include "CleanerCore/Platform/AppendFile.h"
#include "CleanerCore/Platform/RegularFile.h"
#include "CleanerCore/Support/ByteCount.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <span>

namespace loftmere {

namespace {

constexpr int64_t tailBlock = int64_t{64} << 10;
constexpr size_t mostPerLine = size_t{32} << 10; // what lines of ours take on an average at the very most
constexpr size_t leastTail = size_t{8} << 20;    // though a few may be longer
constexpr size_t streamBlock = size_t{1} << 20;

int64_t sizeOf(const std::string& path) {
    const auto status = targetStatus(path);
    return status ? status->size : 0;
}

// The end of the file, from the start of a line on, with at least `limit` lines where there are so many
// and they are no longer than lines of ours.
std::string tailOf(const RegularFile& file, int64_t size, size_t limit) {
    std::vector<std::string> blocks; // the last first
    size_t lines = 0;
    int64_t start = size;
    // A log without line ends is damaged; it must not be taken into memory whole.
    const size_t most = std::max(leastTail, std::min(limit, leastTail) * mostPerLine);
    const int64_t least = std::max<int64_t>(0, size - static_cast<int64_t>(most));
    // One line break more than lines: the first of the lines must be whole.
    while (start > least && lines <= limit) {
        const int64_t from = std::max<int64_t>(0, start - tailBlock);
        std::string block(static_cast<size_t>(start - from), '\0');
        const auto got = file.read(from, std::as_writable_bytes(std::span(block)));
        if (got != block.size()) return "";
        lines += static_cast<size_t>(std::ranges::count(block, '\n'));
        // An empty line is none; where there are any, a little more is read.
        for (size_t at = block.find("\n\n"); at != std::string::npos; at = block.find("\n\n", at + 1))
            --lines;
        blocks.push_back(std::move(block));
        start = from;
    }
    std::string tail;
    for (auto block = blocks.rbegin(); block != blocks.rend(); ++block) tail += *block;
    if (start > 0) tail.erase(0, tail.find('\n') + 1);
    return tail;
}

// Calls `visit` with the lines from the last to the first, without empty ones, while it answers true.
template <class Visit> void backwards(std::string_view text, Visit visit) {
    while (!text.empty()) {
        const size_t start = text.rfind('\n') + 1; // 0 when there is none
        const std::string_view line = text.substr(start);
        text = text.substr(0, start == 0 ? 0 : start - 1);
        if (!line.empty() && !visit(line)) return;
    }
}

// Adds up whole lines and answers how much of the text they are.
size_t addWholeLines(std::string_view text, int64_t& sum) {
    size_t used = 0;
    for (size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n', used)) {
        addBytes(sum, freedBytesOf(text.substr(used, end - used)));
        used = end + 1;
    }
    return used;
}

} // namespace

AuditLog::AuditLog(const Paths& paths) : file_(paths.auditFile()) {}

void AuditLog::append(const std::vector<AuditEntry>& entries) {
    if (entries.empty()) return;
    const std::lock_guard guard(lock_);
    std::string lines;
    for (const AuditEntry& entry : entries) {
        if (const auto line = writeJson(JsonCodec<AuditEntry>::encode(entry), JsonStyle::compact)) {
            lines += *line + "\n";
        }
    }
    if (auto file = AppendFile::open(file_, AppendFile::FinalLink::follow)) (void)file->append(lines);
}

std::vector<AuditEntry> AuditLog::recent(size_t limit) const {
    std::vector<AuditEntry> entries;
    const auto file = RegularFile::open(file_);
    if (!file || limit == 0) return entries;
    size_t seen = 0;
    const std::string tail = tailOf(*file, sizeOf(file_), limit);
    backwards(tail, [&](std::string_view line) {
        if (auto entry = AuditEntry::ofLine(line)) entries.push_back(std::move(*entry));
        return ++seen < limit;
    });
    return entries;
}

int64_t AuditLog::lifetimeFreed() const {
    int64_t sum = 0;
    const auto file = RegularFile::open(file_);
    if (!file) return sum;
    std::string text;
    for (int64_t offset = 0;;) {
        const size_t kept = text.size(); // the beginning of a line that goes on in the next block
        text.resize(kept + streamBlock);
        const auto got = file->read(offset, std::as_writable_bytes(std::span(text).subspan(kept)));
        text.resize(kept + got.value_or(0));
        if (got.value_or(0) == 0) break;
        offset += static_cast<int64_t>(*got);
        text.erase(0, addWholeLines(text, sum));
    }
    addBytes(sum, freedBytesOf(text));
    return sum;
}

} // namespace loftmere
