#pragma once

#include "CleanerCore/Support/Result.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace loftmere {

// Creates a named pipe. Fails with EEXIST when something is at the path.
Status makeNamedPipe(const std::string& path, uint32_t mode);

// A conversation of lines over two named pipes with another process.
struct PipeQuestion {
    std::string requests; // the pipe that the other process reads
    std::string replies;  // the pipe that it writes; it opens it again for each reply
    std::string line;     // what to ask, without the line end
    size_t stale = 0;     // replies to earlier questions, which come before ours
    double timeout = 0;   // seconds
};

struct PipeAnswer {
    bool asked = false;               // the whole question was written
    size_t linesRead = 0;             // of the stale replies and ours
    std::optional<std::string> reply; // the line as it came, any bytes, without its end
};

// Asks, and waits for the reply. There is none when nobody reads, when the other process goes away and when
// it takes too long. None of this blocks longer than the limit or raises SIGPIPE. Any thread.
PipeAnswer askThroughPipes(const PipeQuestion& question);

} // namespace loftmere
