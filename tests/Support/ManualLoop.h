#pragma once

#include "LoftmereApp/Model/RunLoop.h"

#include <gtest/gtest.h>

#include <memory>

namespace loftmere::test {

// A run loop whose clock stands still until the test moves it.
class ManualLoop {
public:
    const std::shared_ptr<RunLoop> loop = std::make_shared<RunLoop>([this] { return now_; });

    // Lets that much time pass, and everything run that becomes due.
    void advance(double seconds) {
        now_ += std::chrono::duration_cast<RunLoop::Moment::duration>(std::chrono::duration<double>(seconds));
        loop->runReady();
    }

    // Runs until `done` holds; fails the test when that takes absurdly long.
    void runUntil(const std::function<bool()>& done) {
        const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        loop->runUntil([&] { return done() || std::chrono::steady_clock::now() > giveUp; });
        ASSERT_TRUE(done()) << "timed out";
    }

private:
    RunLoop::Moment now_;
};

} // namespace loftmere::test
