#pragma once

#include "companions/report/export/load_target.h"

#include <cstdio>
#include <map>
#include <string>

// What of the load an export holds, and what it cannot hold.
class ExportNotes {
  public:
    void count(const LoadTarget& target) { exported_.add(target.count); }

    // `why` completes the sentence "Left out: 2 requests (1 URL) ...", or "Changed: ...".
    // `requests`: 0 when nobody can tell.
    void leave_out(const char* why, uint64_t requests) { left_out_[why].add(requests); }
    void change(const char* why, uint64_t requests) { changed_[why].add(requests); }

    bool is_nothing_exported() const { return exported_.requests == 0; }

    // A line for the whole and one for each reason.
    void print(FILE* stream) const;

  private:
    struct Amount {
        uint64_t requests = 0;
        uint64_t urls = 0;

        void add(uint64_t count) {
            requests += count;
            ++urls;
        }
        std::string text() const;
    };

    Amount exported_;
    std::map<std::string, Amount> left_out_; // by the reason
    std::map<std::string, Amount> changed_;  // likewise
};
