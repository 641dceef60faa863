#pragma once

#include "CleanerCore/Platform/posix/Calls.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace loftmere::test {

// Breaks file system calls on purpose, for any operation of the product. One rig at a time; the operation may
// use threads of its own.

// How many calls the operation makes.
int64_t callsIn(const std::function<void()>& operation);

// Runs the operation in a child process that dies right before its n-th call (from 1). False when the
// operation came to its end first. What the child did to the disk stays; its exit code otherwise is a failed
// test.
bool dieAtCall(int64_t n, const std::function<void()>& operation);

// Runs the operation with its n-th call (of one kind, or of all) failing once with `error`. False when there
// was no such call.
bool failCall(int64_t n, int error, const std::function<void()>& operation,
              std::optional<calls::Call> kind = std::nullopt);

// A second process's view of a folder: every file below it with its content, "path=content" each on a line.
std::string filesBelow(const std::string& folder);

} // namespace loftmere::test
