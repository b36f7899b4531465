#include "tools/patterns/redirect_followups.h"

#include "tests/patterns/plain_redirects.h"
#include "tests/unit_helpers.h"

#include <vector>

// Mostly more locations than there is room for.
TEST(RedirectFollowups, AgreeWithComposedTexts) {
    const char* starts[] = {"/", "http://h/", "HTTP://H/", "https://h:8/", "hTTps://h", "http:/h"};
    const std::string hosts[] = {"h", "H", "h:8", "hh", ""};
    Choices choices(8);
    RedirectLocations locations;
    PlainRedirects expected;
    std::vector<std::string> texts(20'000);
    for (size_t i = 0; i < texts.size(); ++i) {
        if (choices.one_in(60)) {
            locations.clear();
            expected.clear();
        } else if (choices.one_in(3)) {
            texts[i] = choices.of(starts) + choices.text("abB", 2);
            locations.remember(texts[i].c_str());
            expected.remember(texts[i]);
        } else {
            const std::string& host = choices.of(hosts);
            std::string url = "/" + choices.text("aAb", 2);
            alInfo request = {};
            request.host_ip = host.c_str();
            request.url = url.data();
            ASSERT_EQ(locations.take_follow_up(request), expected.take(host, url))
                << "step " << i << ": " << host << url;
        }
    }
}
