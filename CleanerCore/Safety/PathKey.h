#pragma once

#include <string>

namespace loftmere {

// A standardised path made ready for comparing with many others. Spellings that Unicode calls canonically
// equivalent are equal. Case counts, except where the volume itself takes two spellings for one item.
// Immutable; any thread.
class PathKey {
public:
    explicit PathKey(std::string path);

    const std::string& path() const { return path_; }

    bool isSame(const PathKey& other) const;

    // By whole components.
    bool isAtOrUnder(const PathKey& root) const;
    bool isUnder(const PathKey& root) const { return isAtOrUnder(root) && !isSame(root); }

    // One of the two is at or under the other.
    bool overlaps(const PathKey& other) const { return isAtOrUnder(other) || other.isAtOrUnder(*this); }

    // Whether `word`, which is in lower case, stands anywhere in the path.
    bool contains(const std::string& word) const;

    // The rest of the path below `root`, without a leading slash. Only for a path at or under it.
    std::string below(const PathKey& root) const;

private:
    bool reaches(const PathKey& root) const;
    size_t lengthOfComponents(size_t count) const;

    std::string path_;
    std::string composed_;
    std::string caseless_;
    size_t components_;
};

// Both paths name the same item, a final link not followed. False when either is not there.
bool sameOnDisk(const std::string& a, const std::string& b);

} // namespace loftmere
