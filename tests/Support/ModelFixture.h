#pragma once

#include "LoftmereApp/Model/AppModel.h"
#include "LoftmereApp/Model/MainThread.h"
#include "tests/Support/ScriptedScanner.h"
#include "tests/Support/TemporaryHome.h"

#include <gtest/gtest.h>

namespace loftmere::test {

// A model over a home of its own, with scanners that the test decides and a clock that stands still until the
// test moves it.
class ModelFixture : public testing::Test {
protected:
    std::unique_ptr<AppModel> makeModel(ScannerScript script = {}) {
        return std::make_unique<AppModel>(loop, home.paths(), scripted(std::move(script)));
    }
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
    template <class T> const auto& finish(const Task<T>& task) {
        runUntil([&] { return task.isDone(); });
        return task.value();
    }

    TemporaryHome home;
    const std::shared_ptr<RunLoop> loop = std::make_shared<RunLoop>([this] { return now_; });

private:
    RunLoop::Moment now_;
};

} // namespace loftmere::test
