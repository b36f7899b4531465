#pragma once

#include "base/result_file.h"

#include <cstdint>
#include <string_view>

// Whether the settings ask for a list: dump_query_flag and ignore_query_flag.
bool is_query_list_wanted();

// query_url.list: the full URLs of the requests whose query is ignored, one a line, those of one
// unique URL together.
class QueryList {
  public:
    QueryList() = default; // none is written; an earlier one stays

    // Removes the list of an earlier run, or empties one that cannot be removed, and makes a new
    // one when one is wanted. Fails when that fails.
    explicit QueryList(const OwnDirectory& config_dir);

    bool is_open() const { return file_.is_open(); }

    // Byte offset at which the next line will begin.
    int64_t offset() const { return written_len_; }

    // Adds a line, or fails.
    void add(std::string_view url);

    // Closes the list if it is open. Fails when it could not be written whole.
    void close();

  private:
    ResultFile file_;
    int64_t written_len_ = 0;
};
