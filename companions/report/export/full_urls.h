#pragma once

#include "base/own_directory.h"
#include "companions/report/export/url_list_rows.h"

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

// The full URLs of the rows of url.list whose query was cut off, from query_url.list.
class FullUrls {
  public:
    // A list that is not there is no failure as long as nothing is asked of it.
    explicit FullUrls(const OwnDirectory& config_dir);
    ~FullUrls();
    FullUrls(const FullUrls&) = delete;
    FullUrls& operator=(const FullUrls&) = delete;

    // Calls `use` with each full URL of a row and the number of its requests, as they come first.
    // One that is among more than 65,536 different ones of a row may come again, with further
    // requests. Fails when the list is missing, or does not have the URLs of this row there.
    void for_each(const UrlListLine& row,
                  const std::function<void(std::string_view url, uint64_t count)>& use);

  private:
    void go_to(const UrlListLine& row);
    std::string_view read_line(const UrlListLine& row);
    [[noreturn]] void fail_to_fit(const UrlListLine& row) const;

    std::string path_;
    FILE* file_;
    int64_t position_ = 0; // bytes, of what is read next
    char* line_ = nullptr; // owned, as getline allocates it
    size_t line_capacity_ = 0;
};
