#include "tools/parse/relative_location.h"

#include <gtest/gtest.h>

TEST(RelativeLocation, IsOneWithoutSchemeOrRoot) {
    for (const char* location : {"next.jsp", "./x", "../x", "", "htt", "ftp://h/", "?x=1"}) {
        EXPECT_TRUE(is_relative_location(location)) << location;
    }
    for (const char* location : {"/", "/x", "http://h/", "HTTPS://h/", "httpfile.html"}) {
        EXPECT_FALSE(is_relative_location(location)) << location;
    }
}

TEST(RelativeLocation, IsResolvedAgainstTheDirectoryOfTheRequest) {
    const char* rows[][3] = {
        // location, URL of the request, result
        {"next.jsp", "/shop/cart/view.jsp?id=1", "/shop/cart/next.jsp"},
        {"./next.jsp", "/shop/cart/view.jsp?id=1", "/shop/cart/next.jsp"},
        {"../home.jsp", "/shop/cart/view.jsp?id=1", "/shop/home.jsp"},
        {"../../x", "/shop/cart/view.jsp", "/x"},
        {"../../../x", "/shop/cart/view.jsp", ""},
        {"./../x", "/a/b", "/x"},
        {".././x", "/a/b/c", "/a/./x"},
        {"..", "/a/b", "/a/.."},
        {"x/../y", "/a/b", "/a/x/../y"},
        {"", "/a/b", "/a/"},
        {"d", "/a?x=/b/c", "/d"},
        {"d", "/a/b#/c?/e", "/a/d"},
        {"d", "/a;x=/b/c", "/a;x=/b/d"},
        {"../x", "/", ""},
        {"x", "http://h/a", ""},
        {"x", "", ""},
    };
    for (const auto& [location, request, result] : rows) {
        std::string resolved = "left from the line before";
        make_absolute_from_relative_url(location, request, resolved);
        EXPECT_EQ(resolved, result) << location << " on " << request;
    }
    const std::string directory = "/" + std::string(60'000, 'd') + "/";
    std::string resolved;
    make_absolute_from_relative_url("next", directory + "page", resolved);
    EXPECT_EQ(resolved, directory + "next");
}
