#pragma once

#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Process/Shell.h"
#include "CleanerCore/Records/AppConfig.h"
#include "CleanerCore/Records/ScanItem.h"
#include "CleanerCore/Safety/RemovalPermit.h"

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace loftmere {

// Where items that need root gather, in memory only, until the user has them all removed with one prompt. Any
// thread; only `flush` takes long.
class AdminQueue {
public:
    using Remover = std::function<Shell::Result(const std::vector<ClearedPath>&)>;

    struct Outcome {
        std::vector<ScanItem> removed;
        std::vector<std::pair<ScanItem, std::string>> failed; // with the sentence for the user
        int64_t freed = 0;                                    // bytes
    };

    // The one of this process.
    static AdminQueue& shared();

    explicit AdminQueue(Remover remover);

    // Adds the items whose id was not queued before the call.
    void enqueue(const std::vector<ScanItem>& items);

    std::vector<ScanItem> pending() const;
    int64_t pendingBytes() const;

    // Forgets all items; nothing is removed and nothing logged.
    void clear();

    // Removes all that is queued as root, in one go, and logs it. What the policy refuses by now and what has
    // vanished is left out silently. While the gate gives no permit every item fails with its sentence. The
    // queue is empty afterwards, whatever failed. Blocks, for a prompt perhaps: never on the main thread.
    Outcome flush(const Paths& paths, const AppConfig& config);

private:
    const Remover remover_;
    mutable std::mutex lock_; // never held during a removal
    std::vector<ScanItem> items_;
};

} // namespace loftmere
