#pragma once

#include "CleanerCore/Support/Result.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace loftmere {

// Makes a named pipe. Fails with EEXIST when something stands there.
Status makeNamedPipe(const std::string& path, uint32_t mode);

// A conversation of lines over two named pipes with another process.
struct PipeQuestion {
    std::string requests; // the pipe that the other reads
    std::string replies;  // the pipe that it writes, opening it anew for each reply
    std::string line;     // what to ask, without the line end
    size_t stale = 0;     // replies to earlier questions that come first and are not ours
    double timeout = 0;   // seconds
};

struct PipeAnswer {
    bool asked = false;               // the question went out whole
    size_t linesRead = 0;             // of the stale replies and ours
    std::optional<std::string> reply; // the line as it came, any bytes, without its end
};

// Asks, and waits for the reply. Nobody there to read, one who goes away, and one who takes too long give no
// reply; none of them blocks beyond the limit or raises SIGPIPE. Any thread.
PipeAnswer askThroughPipes(const PipeQuestion& question);

} // namespace loftmere
