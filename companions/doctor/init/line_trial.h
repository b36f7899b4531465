#pragma once

#include "base/marked_line.h"
#include "companions/doctor/init/log_layout.h"
#include "tools/parse/line_parsers.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

// Tries a layout on lines with the tool's own parser, whose settings it changes while it lives: one
// at a time, on one thread.
class LineTrial {
  public:
    // Sessions are left aside, so that an address that the tool refuses as one does not decide
    // about the layout. Fails when a field is missing that a run needs.
    explicit LineTrial(const LogLayout& layout);

    // Gives a line to the parser. Returns what becomes of it; the request that it is, when it is
    // accepted, holds until the next line.
    LineKind parse(const std::string& line);
    const alInfo& request() const { return thread_->request; }

    // Whether the request that was accepted last is one by what it holds, and not by chance: it has
    // a method, a status, and cookies where the layout has some.
    bool is_plausible() const;

  private:
    bool has_cookies_;
    LineParser* parser_;
    std::unique_ptr<MarkedLine> line_; // split in place
    std::unique_ptr<ParsingThread> thread_;
};

// The fields that the tool's splitter makes of a line; none when a quote or bracket is not closed.
std::vector<std::string> split_into_fields(const std::string& line);

// Whether a text looks like a Cookie header: name=value; name=value
bool looks_like_cookies(std::string_view text);
