#pragma once

#include "base/line_observer.h"

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
