#include "tools/parse/cookie_values.h"

#include <gtest/gtest.h>
#include <string>

TEST(CookieValues, RunFromTheNameToTheNextSemicolon) {
    const std::string c63(63, 'v');
    const struct {
        std::string header;
        size_t skip;
        std::string value;
    } rows[] = {
        {"akaau=XYZ; JSESSIONID=ABC", 11, "ABC"},
        {"JSESSIONID=XYZ; x", 10, "=XYZ"},
        {"a=1; JSESSIONID=A B=C ; JSESSIONID=D", 11, "A B=C "},
        {"XJSESSIONID=1; JSESSIONID=2", 11, "1"},
        {"JSESSIONID=;x", 11, ""},
        {"JSESSIONID;x=1", 11, "x=1"},
        {"JSESSIONID", 11, ""},
        {"JSESSIONID=" + c63 + ";x", 11, c63},
        {"JSESSIONID=" + c63 + "w", 11, c63},
        {"JSESSIONID=" + std::string(90'000, 'v'), 11, c63},
    };
    for (const auto& row : rows) {
        char value[max_cookie_length] = "before";
        EXPECT_TRUE(get_cookie_value(row.header.c_str(), "JSESSIONID", row.skip, value));
        EXPECT_EQ(value, row.value) << row.header;
    }
    for (const char* header : {"", "-", "jsessionid=1", "JSESSION ID=1"}) {
        char value[max_cookie_length] = "before";
        EXPECT_FALSE(get_cookie_value(header, "JSESSIONID", 11, value)) << header;
        EXPECT_STREQ(value, "before") << header;
    }
}
