#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace loftmere {

// Bytes really taken on disk by all regular files below a real folder, each name of a hard-linked file
// counted. Links are not followed, nothing but folders is opened, what cannot be read or vanishes meanwhile
// is passed over. 0 when `folder` is no folder that can be read; a link to one is none.
//
// `cancel` is asked at every 2000th entry, before that entry is added, on any thread but never on two at
// once; once it answers true it is asked no more and the total so far is the answer. It must not throw.
//
// Any thread. The calling thread works; where there is much to look into, helpers join it. Open descriptors
// stay bounded however wide or deep the tree is. A wide folder takes a fixed amount of memory; deep down,
// each folder on the way holds the names of its subfolders.
int64_t allocatedBelow(const std::string& folder, const std::function<bool()>& cancel = nullptr);

} // namespace loftmere
