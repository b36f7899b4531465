#include "companions/doctor/pattern_trials.h"

#include "tools/parse/counted_url.h"
#include "tools/patterns/pattern_index.h"
#include "tools/patterns/pattern_matcher.h"
#include "tools/patterns/pattern_regex.h"

#include <algorithm>
#include <cstring>
#include <strings.h>

namespace {

// The library, which is asked only to tell people more, may need the square of a URL's length.
constexpr size_t longest_url_for_library = 4096;

std::string covered_part(const UPInfo& pattern, const std::string& url) {
    int32_t start;
    int32_t end;
    if (url.size() > longest_url_for_library ||
        zvr_match_regex(url.c_str(), &pattern.url_ptrn_regex, &start, &end) != 0) {
        return "";
    }
    return url.substr(static_cast<size_t>(start), static_cast<size_t>(end - start));
}

// Whether the entry would fit if it asked for no other method and host than the URL's.
bool covers(PatternMatcher& matcher, const PatternTrial& trial, const std::string& url) {
    const UPInfo& pattern = pattern_tables[trial.kind].entries[trial.index];
    const auto fitting = matcher.find_all(url.c_str(), pattern.method, pattern.host);
    return std::any_of(fitting.begin(), fitting.end(), [&](const DecidingEntry& entry) {
        return entry.kind == trial.kind && entry.index == trial.index;
    });
}

void tell_why_not(PatternMatcher& matcher, const TriedUrl& url, PatternTrial& trial) {
    const UPInfo& pattern = pattern_tables[trial.kind].entries[trial.index];
    if (!covers(matcher, trial, url.url)) {
        trial.part = covered_part(pattern, url.url);
        trial.outcome =
            trial.part.empty() ? TrialOutcome::covers_nothing : TrialOutcome::covers_part;
        return;
    }
    const bool fits_method = std::strcmp(pattern.method, na_string) == 0 ||
                             strcasecmp(pattern.method, url.method.c_str()) == 0;
    trial.outcome = fits_method ? TrialOutcome::other_host : TrialOutcome::other_method;
}

} // namespace

std::string listed_url(const std::string& logged_url) {
    std::string url = logged_url;
    alInfo request = {};
    request.url = url.data();
    request.url_len = static_cast<int>(url.size());
    find_counted_url(request);
    return std::string(counted_url(request)) + (has_ignored_query(request) ? "*" : "");
}

std::vector<PatternTrial> try_patterns(const TriedUrl& url) {
    const PatternIndex index;
    PatternMatcher matcher(index);
    const auto fitting = matcher.find_all(url.url.c_str(), url.method.c_str(), url.host.c_str());
    std::vector<PatternTrial> trials;
    auto next_fitting = fitting.begin();
    for (int i = 0; i < pattern_kind_count; ++i) {
        const auto kind = static_cast<PatternKind>(i);
        for (int32_t entry = 0; entry < pattern_tables[i].total; ++entry) {
            PatternTrial trial = {kind, entry, TrialOutcome::decides, ""};
            const bool fits = next_fitting != fitting.end() && next_fitting->kind == kind &&
                              next_fitting->index == entry;
            if (!fits) {
                tell_why_not(matcher, url, trial);
            } else if (next_fitting++ != fitting.begin()) {
                trial.outcome = TrialOutcome::fits_too;
            }
            trials.push_back(trial);
        }
    }
    return trials;
}
