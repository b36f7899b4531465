#pragma once

#include "tests/support/temporary_directory.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

// Random choices, the same in every run.
class Choices {
  public:
    explicit Choices(uint32_t seed) : engine_(seed) {}

    size_t below(size_t limit) { return engine_() % limit; }
    bool one_in(size_t count) { return below(count) == 0; }

    template <typename List> const auto& of(const List& list) {
        return *(std::begin(list) + static_cast<std::ptrdiff_t>(below(std::size(list))));
    }

    std::string text(std::string_view alphabet, size_t max_length) {
        std::string chosen(below(max_length + 1), '\0');
        for (char& c : chosen) {
            c = of(alphabet);
        }
        return chosen;
    }

    // Deletes, inserts or replaces a character.
    void edit(std::string& text, std::string_view alphabet) {
        const size_t at = below(text.size() + 1);
        text.erase(at, below(2));
        text.insert(at, one_in(3) ? "" : std::string(1, of(alphabet)));
    }

  private:
    std::mt19937 engine_;
};

// Runs checks in a process of their own, for code that fills global tables once, goes by settings,
// or by the process's time zone. The child prints its failures and fails the test.
template <typename Checks> void run_in_child(const Checks& checks) {
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        checks();
        std::fflush(nullptr);
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "a check in the child process failed";
}
