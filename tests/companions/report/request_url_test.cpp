#include "companions/report/export/request_url.h"

#include "base/failure.h"

#include <gtest/gtest.h>

namespace {

std::string path_of(std::string_view url) {
    const std::optional<RequestPath> path = request_path(url);
    return path ? path->text : "none";
}

} // namespace

TEST(RequestUrl, ValidOnesStayAsTheyAre) {
    for (const char* url :
         {"/", "/a;j=1?x=1&y[]=2", "/q'(x)*!,~@:&=+$?a/?b", "/%c3%BC", "//a/../b"}) {
        const std::optional<RequestPath> path = request_path(url);
        ASSERT_TRUE(path) << url;
        EXPECT_EQ(path->text, url);
        EXPECT_FALSE(path->is_encoded);
    }
}

TEST(RequestUrl, WhatNoUrlMayHoldIsEncoded) {
    EXPECT_EQ(path_of("/a|b\"<>\\^`{}\x01\x7f\xc3\xbc"),
              "/a%7Cb%22%3C%3E%5C%5E%60%7B%7D%01%7F%C3%BC");
    EXPECT_EQ(path_of("/a[1]?b[1]"), "/a%5B1%5D?b[1]");
    EXPECT_EQ(path_of("/a#b"), "/a%23b");
    EXPECT_EQ(path_of("/%zz%4%"), "/%25zz%254%25");
    EXPECT_EQ(path_of("/a b"), "/a%20b");
    EXPECT_TRUE(request_path("/a|b")->is_encoded);
}

TEST(RequestUrl, AnAbsoluteOneGivesItsPath) {
    EXPECT_EQ(path_of("http://h.example:80/a?b"), "/a?b");
    EXPECT_EQ(path_of("HTTPS://h.example"), "/");
    EXPECT_EQ(path_of("http://h.example?b=/c"), "/?b=/c");
    EXPECT_FALSE(request_path("http://h.example")->is_encoded);
    for (const char* url : {"*", "", "h.example:443", "://a/b", "a/b"}) {
        EXPECT_FALSE(request_path(url)) << url;
    }
    EXPECT_EQ(path_of("/a?u=http://h/b"), "/a?u=http://h/b");
}

TEST(RequestUrl, HostsAndMethodsHoldNothingThatEndsThem) {
    EXPECT_TRUE(is_host("www.example.com:8080") && is_host("[::1]:80"));
    for (const char* host : {"", "a/b", "a@b", "a b", "a\rb", "a\"b", "\xc3\xbc", "a#b", "a?b"}) {
        EXPECT_FALSE(is_host(host)) << host;
    }
    EXPECT_TRUE(is_method("GET") && is_method("M-SEARCH"));
    for (const char* method : {"", "GET /", "G\tT", "<script>", "G\"T", "G,T"}) {
        EXPECT_FALSE(is_method(method)) << method;
    }
}

TEST(RequestUrl, ABaseUrlIsHostAndPath) {
    EXPECT_EQ(checked_base_url("http://127.0.0.1:8080/"), "http://127.0.0.1:8080");
    EXPECT_EQ(checked_base_url("https://h.example/app//"), "https://h.example/app");
    for (const char* url : {"", "h.example", "ftp://h", "http://", "http:///a", "http://u@h",
                            "http://h?x", "http://h/a b", "http://h#x", "http://h\n"}) {
        EXPECT_THROW(checked_base_url(url), Failure) << url;
    }
}
