#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <set>
#include <string>
#include <thread>

// ThreadSanitizer runs the suites whose names end in "Threaded". This keeps the mark true: a test of another
// suite that starts a thread fails, and so does a marked suite that starts none. What decodes pictures needs
// no mark: ThreadSanitizer does not understand libvips.

namespace {

std::atomic<int> started = 0;

} // namespace

// The linker sends every start of a std::thread here (tests/CMakeLists.txt).
using StartThread = void(std::thread*, std::unique_ptr<std::thread::_State>, void (*)());
extern "C" StartThread realStart __asm__(
    "__real__ZNSt6thread15_M_start_threadESt10unique_ptrINS_6_StateESt14default_deleteIS1_EEPFvvE");
extern "C" StartThread countedStart __asm__(
    "__wrap__ZNSt6thread15_M_start_threadESt10unique_ptrINS_6_StateESt14default_deleteIS1_EEPFvvE");

void countedStart(std::thread* thread, std::unique_ptr<std::thread::_State> state, void (*depend)()) {
    ++started;
    realStart(thread, std::move(state), depend);
}

namespace {

bool isMarked(const std::string& suite) {
    return suite.ends_with("Threaded");
}

class ThreadMarks : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override { started = 0; }

    void OnTestEnd(const testing::TestInfo& test) override {
        const std::string suite = test.test_suite_name();
        if (started > 0) threaded_.insert(suite);
        EXPECT_TRUE(started == 0 || isMarked(suite) || suite.starts_with("Photos"))
            << suite << '.' << test.name() << " starts threads: the name of its suite must end in Threaded";
    }

    void OnTestSuiteEnd(const testing::TestSuite& suite) override {
        const bool isWhole = suite.test_to_run_count() == suite.total_test_count();
        EXPECT_TRUE(!isMarked(suite.name()) || !isWhole || threaded_.contains(suite.name()))
            << suite.name() << " starts no thread: its name must not end in Threaded";
    }

    void OnTestIterationEnd(const testing::UnitTest& all, int) override {
        EXPECT_GT(all.test_to_run_count(), 0) << "no test matches " << GTEST_FLAG_GET(filter);
    }

    std::set<std::string> threaded_;
};

[[maybe_unused]] const bool isWatched = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new ThreadMarks);
    return true;
}();

} // namespace
