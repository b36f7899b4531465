#include "tools/parse/relative_location.h"

#include <gtest/gtest.h>

TEST(RelativeLocation, IsResolvedAgainstTheDirectoryOfTheRequest) {
    const char* rows[][3] = {
        // location, URL of the request, result
        {"next.jsp", "/shop/cart/view.jsp?id=1", "/shop/cart/next.jsp"},
        {"../home.jsp", "/shop/cart/view.jsp?id=1", "/shop/home.jsp"},
        {"../../../x", "/shop/cart/view.jsp", ""},
        {".././x", "/a/b/c", "/a/./x"},
        {"..", "/a/b", "/a/.."},
        {"htt", "/a?x=/b/c", "/htt"},
        {"ftp://h/", "/a/b#/c?/e", "/a/ftp://h/"},
        {"d", "/a;x=/b/c", "/a;x=/b/d"},
        {"../x", "/", ""},
        {"x", "http://h/a", ""},
    };
    for (const auto& [location, request, result] : rows) {
        EXPECT_TRUE(is_relative_location(location)) << location;
        std::string resolved = "left from the line before";
        make_absolute_from_relative_url(location, request, resolved);
        EXPECT_EQ(resolved, result) << location << " on " << request;
    }
    for (const char* location : {"/", "/x", "http://h/", "HTTPS://h/", "httpfile.html"}) {
        EXPECT_FALSE(is_relative_location(location)) << location;
    }
    const std::string directory = "/" + std::string(60'000, 'd') + "/";
    std::string resolved;
    make_absolute_from_relative_url("next", directory + "page", resolved);
    EXPECT_EQ(resolved, directory + "next");
}
