#include "companions/common/text_table.h"

#include "companions/common/shown_text.h"

#include <algorithm>
#include <utility>

namespace {

std::string padding(const std::string& cell, size_t width) {
    return std::string(width - width_of(cell), ' ');
}

} // namespace

TextTable::TextTable(std::vector<TableColumn> columns) : columns_(std::move(columns)) {}

void TextTable::add_row(std::vector<std::string> cells) {
    rows_.push_back(std::move(cells));
}

std::string TextTable::text() const {
    std::vector<size_t> widths;
    std::vector<std::string> headings;
    for (const TableColumn& column : columns_) {
        widths.push_back(width_of(column.heading));
        headings.push_back(column.heading);
    }
    for (const auto& row : rows_) {
        for (size_t i = 0; i < widths.size(); ++i) {
            widths[i] = std::max(widths[i], width_of(row[i]));
        }
    }
    std::string text;
    const auto add_line = [&](const std::vector<std::string>& cells) {
        for (size_t i = 0; i < cells.size(); ++i) {
            const bool is_last = i + 1 == cells.size();
            const std::string pad = padding(cells[i], widths[i]);
            const bool is_right = columns_[i].alignment == Alignment::right;
            text += is_right ? pad + cells[i] : cells[i] + (is_last ? "" : pad);
            text += is_last ? "\n" : "  ";
        }
    };
    add_line(headings);
    std::for_each(rows_.begin(), rows_.end(), add_line);
    return text;
}
