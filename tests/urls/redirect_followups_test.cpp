#include "tools/urls/redirect_followups.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

bool take(RedirectLocations& locations, const std::string& url, const char* host = "h") {
    return locations.take_follow_up(host, url);
}

} // namespace

TEST(RedirectLocations, NameTheUrlsThatABrowserAsksForNext) {
    const struct {
        const char* odd;
        const char* location;
        const char* host;
        const char* url;
        bool is_follow_up;
    } rows[] = {
        {"a path names it on any host", "/home", "h2", "/home", true},
        {"the host is named too", "http://h/home", "h", "/home", true},
        {"another host is named", "http://h/home", "h2", "/home", false},
        {"a longer host is named", "http://h2/home", "h", "/home", false},
        {"the other scheme", "https://h/home", "h", "/home", true},
        {"capitals in the location", "HTTP://H/HOME", "h", "/home", true},
        {"capitals in the request", "https://h/home", "H", "/Home", true},
        {"a scheme that no browser takes over", "ftp://h/home", "h", "/home", false},
        {"the URL goes on", "/home", "h", "/home?x", false},
        {"the location goes on", "http://h/home/x", "h", "/home", false},
        {"the URL of a request to a proxy is no path", "http://h/a", "h", "http://h/a", false},
        {"a log without hosts", "http://NA/home", "NA", "/home", true},
    };
    for (const auto& [odd, location, host, url, is_follow_up] : rows) {
        RedirectLocations locations;
        locations.remember(location);
        EXPECT_EQ(take(locations, url, host), is_follow_up) << odd;
        EXPECT_FALSE(is_follow_up && take(locations, url, host)) << odd << ", asked for again";
    }
}

// There is room for sixteen. Locations are "/0", "/1" and so on.
TEST(RedirectLocations, MakeRoomInPlaceOfTheFirst) {
    const struct {
        const char* odd;
        std::vector<size_t> followed; // once sixteen are remembered
        size_t more;                  // remembered after that
        std::vector<size_t> unknown;  // at the end
    } rows[] = {
        {"as many as there is room for", {}, 0, {}},
        {"one more takes the first one's place", {}, 1, {0}},
        {"and so does the next, of which the one before is lost", {}, 2, {0, 16}},
        {"one that was followed leaves room in the middle", {7}, 1, {7}},
        {"the last one that was followed leaves room", {15}, 1, {15}},
        {"the first room is taken first, and then in turn given up", {5, 0}, 3, {0, 5, 16}},
        {"room at the end is not seen until the room before it is taken",
         {15, 3, 0},
         3,
         {0, 3, 15}},
    };
    for (const auto& [odd, followed, more, unknown] : rows) {
        std::vector<std::string> texts;
        for (size_t i = 0; i < 16 + more; ++i) {
            texts.push_back("/" + std::to_string(i));
        }
        RedirectLocations locations;
        for (size_t i = 0; i < texts.size(); ++i) {
            for (const size_t number : i == 16 ? followed : std::vector<size_t>()) {
                EXPECT_TRUE(take(locations, texts[number])) << odd;
            }
            locations.remember(texts[i].c_str());
        }
        std::vector<size_t> not_taken;
        for (size_t i = 0; i < texts.size(); ++i) {
            if (!take(locations, texts[i])) {
                not_taken.push_back(i);
            }
        }
        EXPECT_EQ(not_taken, unknown) << odd;
    }
}
