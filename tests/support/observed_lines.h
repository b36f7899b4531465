#pragma once

#include "base/failure.h"
#include "base/line_observer.h"
#include "tests/support/temporary_directory.h"

#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

// What the observer of a reader is told of a line.
struct Observed {
    int line_num;
    ObservedKind kind;
    std::string name;
    std::string text;

    bool operator==(const Observed&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Observed& observed) {
    return out << "line " << observed.line_num << ", kind " << static_cast<int>(observed.kind)
               << ", name '" << observed.name << "', text '" << observed.text << "'";
}

// Observes the lines that are read while it lives. One at a time.
class LinesObserved {
  public:
    LinesObserved() {
        lines_.clear();
        line_observer = [](const ObservedLine& line) {
            lines_.push_back({line.place.line_num, line.kind, std::string(line.place.name),
                              std::string(line.text)});
        };
    }
    ~LinesObserved() { line_observer = nullptr; }
    LinesObserved(const LinesObserved&) = delete;
    LinesObserved& operator=(const LinesObserved&) = delete;

    std::vector<Observed> take() { return std::exchange(lines_, {}); }

  private:
    inline static std::vector<Observed> lines_;
};

// A file, what is odd about it, and what an observer is told of its lines.
struct ObservedFile {
    std::string oddity;
    std::string text;
    std::vector<Observed> told;
};

// What an observer is told while `read` reads a file by its path, whether it fails or not.
template <typename Read> std::vector<Observed> told_of(const std::string& path, const Read& read) {
    LinesObserved observer;
    try {
        read(path);
    } catch (const Failure& failure) {
        EXPECT_NE(failure.message, "");
    }
    return observer.take();
}

// Also of a file that is not there.
template <typename Read>
void expect_told(const std::vector<ObservedFile>& files, const Read& read) {
    const TemporaryDirectory directory;
    for (const auto& [oddity, text, told] : files) {
        EXPECT_EQ(told_of(directory.write("file", text), read), told) << oddity;
    }
    EXPECT_EQ(told_of(directory.path("none"), read),
              (std::vector<Observed>{{0, ObservedKind::file_not_opened, "", ""}}));
}
