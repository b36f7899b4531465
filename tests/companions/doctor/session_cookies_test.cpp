#include "companions/doctor/init/session_cookies.h"

#include "companions/doctor/init/cookie_header.h"
#include "companions/doctor/init/log_format.h"
#include "tests/unit_helpers.h"

#include <fmt/core.h>

namespace {

struct Request {
    std::string client;
    std::string cookies;
    std::string set_cookies = "-";
};

const LogLayout layout = read_log_format(R"(%h %t "%r" %>s "%{Cookie}i" "%{Set-Cookie}o")").layout;

LogSample sample_of(const std::vector<Request>& requests) {
    LogSample sample = {"log"};
    for (const Request& request : requests) {
        sample.lines.push_back(
            fmt::format(R"({} [10/Oct/2000:13:55:36 +0000] "GET /a HTTP/1.1" 200 "{}" "{}")",
                        request.client, request.cookies, request.set_cookies));
    }
    return sample;
}

SessionChoice choice_for(const std::vector<Request>& requests) {
    return choose_session(layout, look_for_sessions(layout, {sample_of(requests)}));
}

} // namespace

TEST(SessionCookies, TheOneThatTiesRequestsTogetherIsChosen) {
    run_in_child([] {
        std::vector<Request> requests;
        for (int client = 0; client < 10; ++client) {
            const std::string address = "10.0.0." + std::to_string(client);
            requests.push_back({address, "lang=de", fmt::format("tid=S{}; Path=/", client)});
            for (int i = 0; i < 6; ++i) { // the token changes with each request
                requests.push_back({address, fmt::format("lang=de; token=T{}; tid=S{}",
                                                         client * 100 + i, client)});
            }
        }
        const SessionChoice choice = choice_for(requests);
        EXPECT_EQ(choice.key, SessionKey::cookie);
        EXPECT_EQ(choice.cookie, "tid");
        EXPECT_EQ(choice.secondary, ""); // "lang" tells nobody apart
    });
}

TEST(SessionCookies, ASecondaryCookieIsThereBeforeTheSession) {
    run_in_child([] {
        std::vector<Request> requests;
        for (int client = 0; client < 10; ++client) {
            const std::string address = "10.0.0." + std::to_string(client);
            const std::string visitor = fmt::format("vid=V{}", client);
            requests.push_back({address, visitor});
            requests.push_back({address, visitor, fmt::format("sid=S{}; HttpOnly", client)});
            for (int i = 0; i < 5; ++i) {
                requests.push_back({address, fmt::format("{}; sid=S{}", visitor, client)});
            }
        }
        const SessionChoice choice = choice_for(requests);
        EXPECT_EQ(choice.cookie, "sid");
        EXPECT_EQ(choice.secondary, "vid");
    });
}

TEST(SessionCookies, WithoutThemTheAddressDoesWhereItCanBeRead) {
    run_in_child([] {
        EXPECT_EQ(choice_for({{"10.0.0.1", "-"}, {"-", "-"}}).key, SessionKey::client_address);
        EXPECT_EQ(choice_for({{"2001:db8::1", "-"}, {"10.0.0.1", "-"}}).key, SessionKey::none);
    });
}

TEST(SessionCookies, ANameThatTheToolFindsElsewhereCountsForLess) {
    run_in_child([] {
        const LogSample sample =
            sample_of({{"10.0.0.1", "XSID=1; SID=2"}, {"10.0.0.1", "SID=2; XSID=1"}});
        for (const CookieUse& use : look_for_sessions(layout, {sample}).cookies) {
            EXPECT_EQ(use.misread, use.name == "SID" ? 1U : 0U) << use.name;
        }
    });
}

TEST(CookieHeader, IsTakenApart) {
    const std::vector<Cookie> cookies = cookies_of("a=1; b=x=y;+c=3; d; =e; bad name=1");
    ASSERT_EQ(cookies.size(), 3U);
    EXPECT_EQ(cookies[1].value, "x=y");
    EXPECT_EQ(cookies[2].name, "c");
}

TEST(CookieHeader, SetCookiesAreToldFromTheirAttributes) {
    const std::vector<Cookie> cookies = set_cookies_of(
        "a=1; Expires=Wed, 21 Oct 2026 07:28:00 GMT; Path=/; HttpOnly, b=2; SameSite=Lax");
    ASSERT_EQ(cookies.size(), 2U);
    EXPECT_EQ(cookies[0].name, "a");
    EXPECT_EQ(cookies[1].name, "b");
    EXPECT_EQ(cookies[1].value, "2");
}
