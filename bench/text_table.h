#pragma once

#include <string>
#include <vector>

namespace bench {

// A table in Markdown, its columns padded so that it reads well as plain text too. The first
// column is aligned to the left, all others to the right.
class TextTable {
  public:
    explicit TextTable(std::vector<std::string> header) : rows_{std::move(header)} {}

    void add_row(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
    void print(const std::string& title) const;

  private:
    std::vector<std::vector<std::string>> rows_;
};

// A number with so many digits after the point; "-" for one that is not available (negative).
std::string format_number(double number, int decimals);

// A count of lines, shortened where that loses nothing: 250 k, 4 M.
std::string format_count(double count);

} // namespace bench
