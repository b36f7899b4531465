#pragma once

#include "tests/support/temporary_directory.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <iterator>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

// Choices by chance that come out the same again: drawn from a seed, or from the bytes of a fuzzer,
// where each choice is the first of what is offered once the bytes are used up.
class Choices {
  public:
    explicit Choices(uint32_t seed) : engine_(seed) {}
    explicit Choices(std::string_view bytes) : bytes_(bytes) {}

    // Whether there is any choice left, which there always is with a seed.
    bool any_left() const { return !bytes_ || !bytes_->empty(); }

    size_t below(size_t limit) { return (bytes_ ? number_for(limit) : engine_()) % limit; }
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

    // The fuzzer's bytes that are left, whatever they are, or a text drawn from the seed.
    std::string rest(std::string_view alphabet, size_t max_length) {
        return bytes_ ? std::string(std::exchange(*bytes_, {})) : text(alphabet, max_length);
    }

    // Deletes, inserts or replaces a character.
    void edit(std::string& text, std::string_view alphabet) {
        const size_t at = below(text.size() + 1);
        text.erase(at, below(2));
        text.insert(at, one_in(3) ? "" : std::string(1, of(alphabet)));
    }

  private:
    size_t number_for(size_t limit) {
        size_t number = 0;
        for (size_t range = limit - 1; range != 0 && !bytes_->empty(); range >>= 8) {
            number = number << 8 | static_cast<unsigned char>(bytes_->front());
            bytes_->remove_prefix(1);
        }
        return number;
    }

    std::mt19937 engine_;
    std::optional<std::string_view> bytes_;
};

// An unnamed file that holds these bytes, to be read from its start.
inline FILE* file_of(std::string_view bytes) {
    FILE* file = std::tmpfile();
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::rewind(file);
    return file;
}

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
