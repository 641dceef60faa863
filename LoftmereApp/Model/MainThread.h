#pragma once

#include <functional>

namespace loftmere {

// The one thread to which all fields of the model belong, seen as a queue of tasks. The windows put their
// toolkit's event loop behind it, everything else a RunLoop.
class MainThread {
public:
    virtual ~MainThread() = default;

    // Runs the task on the main thread, soon and never before `post` has returned. Tasks run in the order in
    // which they were posted. Any thread.
    virtual void post(std::function<void()> task) = 0;

    // Runs the task on the main thread once `seconds` have passed. Any thread.
    virtual void after(double seconds, std::function<void()> task) = 0;

    // Whether the caller is on the main thread.
    virtual bool isCurrent() const = 0;
};

} // namespace loftmere
