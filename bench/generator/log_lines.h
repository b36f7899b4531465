#pragma once

#include "bench/generator/site.h"

#include <cstdint>
#include <ctime>
#include <string>

enum class LocationForm { none, absolute, from_root, relative };

// One request and its response.
struct LoggedRequest {
    time_t time = 0;
    uint64_t microseconds = 0;
    uint64_t bytes = 0;
    unsigned status = 200;
    UrlUse url;
    LocationForm location = LocationForm::none;
    UrlUse target; // of the location

    // A number that ids, address and agent are derived from; 0: a crawler, which accepts no
    // cookies.
    uint64_t visitor = 0;
    bool sends_session_cookie = false;
    bool sets_session_cookie = false;
    const SiteUrl* referer = nullptr;
};

struct LogLayout;

// Writes requests as lines of a log: the usual 15 fields with quotes, or the IIS layout of 15 plain
// fields, in which '+' stands for a blank. Each function appends whole lines to a text.
struct LogLines {
    LogLines(const GeneratorOptions& generator_options, const Site& logged_site);

    void add_header(std::string& text) const;
    void add_request(std::string& text, const LoggedRequest& request);
    // A line that no parser accepts; the variant picks what is wrong with it.
    void add_bad_line(std::string& text, time_t time, uint64_t variant);

    void add_line(std::string& text, const char* form, const LoggedRequest& request);

    const GeneratorOptions& options;
    const Site& site;
    const LogLayout& layout;
    const std::string path_padding;
    time_t date_time = -1;
    std::string date; // of date_time, as the layout has it
};
