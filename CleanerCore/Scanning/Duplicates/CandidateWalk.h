#pragma once

#include "CleanerCore/Scanning/Duplicates/ListedFile.h"
#include "CleanerCore/Scanning/ScanContext.h"

#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace loftmere {

// Lists the files that may be copies of each other: without hidden entries, links, and what lies in packages
// and in folders of tools. For one walk, on one thread.
class CandidateWalk {
public:
    // `context` must outlive the walk. Files below `minBytes` logical bytes are passed over.
    CandidateWalk(const ScanContext& context, int64_t minBytes) : context_(context), minBytes_(minBytes) {}

    // The files below those of the folders that are real ones, the last folder first. Each folder is
    // reported; one that cannot be read is passed over. Cancelled, it answers what it has found by then.
    std::vector<ListedFile> below(std::vector<std::string> folders);

private:
    bool isFirstVisit(const std::string& folder);
    void list(const std::string& folder, std::vector<std::string>& folders);
    void add(std::string path);

    const ScanContext& context_;
    int64_t minBytes_;
    std::set<std::pair<uint64_t, uint64_t>> visited_; // device and inode
    std::vector<ListedFile> found_;
};

} // namespace loftmere
