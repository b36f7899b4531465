#pragma once

#include <string>
#include <vector>

enum class Alignment { left, right };

struct TableColumn {
    std::string heading;
    Alignment alignment = Alignment::left;
};

// Rows in columns that stand below each other, two blanks apart, with a line of headings.
class TextTable {
  public:
    explicit TextTable(std::vector<TableColumn> columns);

    // As many cells as there are columns, made fit to be shown (shown_text.h) where they come from
    // outside.
    void add_row(std::vector<std::string> cells);

    bool empty() const { return rows_.empty(); }

    // All lines, each with a line feed. The text of the last column is never padded.
    std::string text() const;

  private:
    std::vector<TableColumn> columns_;
    std::vector<std::vector<std::string>> rows_;
};
