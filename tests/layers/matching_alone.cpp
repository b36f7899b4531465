#include "base/failure.h"
#include "tests/layers/expectation.h"
#include "tests/support/temporary_directory.h"
#include "tools/config/replay_profile.h"
#include "tools/patterns/pattern_files.h"
#include "tools/patterns/pattern_matcher.h"

#include <string>

// A program that links the matching of URLs and nothing above it: it reads a pattern file and says
// which pattern a URL fits.

namespace {

char profile[] = "profile";

std::string pattern_of(const char* url) {
    const PatternIndex index;
    PatternMatcher matcher(index);
    const auto [kind, found] = matcher.find(url, "GET", "www.example.com");
    if (found != matcher.get_url_pattern_idx(PATTERN_MAIN, url, "GET", "www.example.com")) {
        return "the two searches do not agree";
    }
    return found == no_pattern ? "none" : pattern_tables[kind].entries[found].txn_name;
}

std::string failure_of(const std::string& pattern_file) {
    try {
        save_url_pattern(pattern_file.c_str());
        return "no failure";
    } catch (const Failure& failure) {
        return failure.message;
    }
}

} // namespace

int main() {
    const TemporaryDirectory directory;
    replay_profile = replay_profile_dir = profile;
    save_url_pattern(directory
                         .write("patterns", "active|main|GET|-|View|na|-|na|/shop/*view.jsp*\n"
                                            "active|main|POST|-|Send|na|-|na|/shop/*\n"
                                            "active|main|na|-|Cart|www.example.com|-|na|/cart\n")
                         .c_str());
    sort_pattern_tables();
    const bool holds =
        gives(pattern_of("/shop/product/view.jsp?*"), "View") &&
        gives(pattern_of("/cart"), "Cart") && gives(pattern_of("/shop/product/list.jsp"), "none") &&
        gives(failure_of(directory.write("broken", "active|main|GET\n")),
              "Invalid entry at line '1' in 'replay_url_patterns.dat' for profile 'profile'");
    return holds ? 0 : 1;
}
