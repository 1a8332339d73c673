// Linked into each test program: appends to the file named by ORVANE_MUTANTS_LOG which mutants each test
// evaluates. A line has the test ("*" before all tests, "Suite.*" for what prepares a suite), its
// milliseconds, "passed" or "failed", and the numbers, separated by tabs and blanks.

#include "Mutants.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace {

class ReachListener final : public testing::EmptyTestEventListener {
    void OnTestProgramStart(const testing::UnitTest&) override { write("*", 0, true); }

    void OnTestStart(const testing::TestInfo& test) override {
        if (suite_ == test.test_suite_name()) return;
        suite_ = test.test_suite_name();
        write(suite_ + ".*", 0, true);
    }

    void OnTestEnd(const testing::TestInfo& test) override {
        write(std::string(test.test_suite_name()) + "." + test.name(), test.result()->elapsed_time(),
              !test.result()->Failed());
    }

    static void write(const std::string& name, long milliseconds, bool passed) {
        const char* path = std::getenv("ORVANE_MUTANTS_LOG");
        if (path == nullptr || orvane_mutation::reached == nullptr) return;
        std::ofstream log(path, std::ios::app);
        log << name << '\t' << milliseconds << '\t' << (passed ? "passed" : "failed") << '\t';
        for (int number = 0; number < orvane_mutation::mostMutants; ++number) {
            if (orvane_mutation::reached[number] == 0) continue;
            log << number << ' ';
            orvane_mutation::reached[number] = 0;
        }
        log << '\n';
    }

    std::string suite_;
};

[[maybe_unused]] const bool listens = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new ReachListener);
    return true;
}();

} // namespace
