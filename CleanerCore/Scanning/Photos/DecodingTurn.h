#pragma once

#include "CleanerCore/Files/FS.h"

namespace loftmere {

// The right to decode what takes much memory, which one thread of the program has at a time. A decoding that
// was given up but still runs keeps it until its end.
class DecodingTurn {
public:
    DecodingTurn() = default;
    ~DecodingTurn();
    DecodingTurn(const DecodingTurn&) = delete;
    DecodingTurn& operator=(const DecodingTurn&) = delete;

    // Waits for it, unless it is held here already. False when cancelled meanwhile, which is asked every few
    // milliseconds.
    bool take(const FS::CancelCheck& isCancelled);

private:
    bool isHeld_ = false;
};

} // namespace loftmere
