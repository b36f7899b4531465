#pragma once

#include <cstdio>
#include <string>
#include <string_view>

// Colour for people: only on a terminal that knows it, and not where NO_COLOR is set.
class Style {
  public:
    explicit Style(FILE* stream);

    // The text, which is one of this program's, in the colour of its meaning.
    std::string error(std::string_view text) const { return coloured("31;1", text); }
    std::string warning(std::string_view text) const { return coloured("33;1", text); }
    std::string note(std::string_view text) const { return coloured("36;1", text); }
    std::string heading(std::string_view text) const { return coloured("1", text); }
    std::string faint(std::string_view text) const { return coloured("2", text); }

  private:
    std::string coloured(std::string_view code, std::string_view text) const;

    bool is_coloured_;
};

// Columns of the terminal that the stream leads to; `otherwise` where it leads to none.
size_t terminal_width(FILE* stream, size_t otherwise);
