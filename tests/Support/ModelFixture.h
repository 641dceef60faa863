#pragma once

#include "LoftmereApp/Model/AppModel.h"
#include "tests/Support/ManualLoop.h"
#include "tests/Support/ScriptedScanner.h"
#include "tests/Support/TemporaryHome.h"

#include <gtest/gtest.h>

namespace loftmere::test {

// A model over a home of its own, with scanners that the test decides and a clock that it moves.
class ModelFixture : public testing::Test {
protected:
    std::unique_ptr<AppModel> makeModel(ScannerScript script = {}) {
        return std::make_unique<AppModel>(main.loop, home.paths(), scripted(std::move(script)));
    }
    template <class T> const auto& finish(const Task<T>& task) {
        main.runUntil([&] { return task.isDone(); });
        return task.value();
    }

    TemporaryHome home;
    ManualLoop main;
};

} // namespace loftmere::test
