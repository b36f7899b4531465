#include "text_table.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace bench {

namespace {

void print_cell(const std::string& text, std::size_t width, bool left) {
    const std::string padding(width - text.size(), ' ');
    std::printf("| %s%s%s ", left ? "" : padding.c_str(), text.c_str(),
                left ? padding.c_str() : "");
}

} // namespace

void TextTable::print(const std::string& title) const {
    std::vector<std::size_t> widths(rows_.front().size(), 3);
    for (const auto& row : rows_) {
        for (std::size_t column = 0; column < row.size(); ++column)
            widths[column] = std::max(widths[column], row[column].size());
    }
    std::printf("\n%s\n\n", title.c_str());
    for (std::size_t row = 0; row < rows_.size(); ++row) {
        for (std::size_t column = 0; column < widths.size(); ++column)
            print_cell(rows_[row][column], widths[column], column == 0);
        std::printf("|\n");
        if (row > 0)
            continue;
        for (std::size_t column = 0; column < widths.size(); ++column) {
            const std::string dashes(widths[column], '-');
            std::printf(column == 0 ? "| %s " : "| %s:", dashes.c_str());
        }
        std::printf("|\n");
    }
    std::fflush(stdout);
}

std::string format_number(double number, int decimals) {
    if (number < 0)
        return "-";
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.*f", decimals, number);
    return text.data();
}

std::string format_count(double count) {
    if (count >= 1e6 && std::fmod(count, 1e5) == 0)
        return format_number(count / 1e6, std::fmod(count, 1e6) == 0 ? 0 : 1) + " M";
    if (count >= 1e3 && std::fmod(count, 1e3) == 0)
        return format_number(count / 1e3, 0) + " k";
    return format_number(count, 0);
}

} // namespace bench
