#pragma once

#include "base/own_directory.h"
#include "base/text_file.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// A row of url.list as it stands there. Its texts are pieces of the line.
struct UrlListLine {
    bool is_filtered;
    std::string_view method;
    std::string_view url; // every "|" written "&#124;"
    uint64_t count;
    std::string_view transaction; // empty: none; likewise the following
    std::string_view host;
    int64_t query_file_offset; // -1: none
    std::string_view body_file;
};

// Reads a row; nothing when it is none, for instance as a log had a separator in a method or host.
std::optional<UrlListLine> read_url_list_line(std::string_view line);

// url.list of the configuration directory, row by row.
class UrlListRows {
  public:
    // Fails when there is no such list.
    explicit UrlListRows(const OwnDirectory& config_dir);

    // The next line of a row, valid until the next call; nothing at the end. Fails when the list
    // cannot be read, or has not as many rows as it says.
    std::optional<std::string_view> next();

  private:
    LineText read_head_line();
    [[noreturn]] void fail_incomplete() const;

    std::string path_;
    TextFile file_;
    uint64_t rows_left_;
};
