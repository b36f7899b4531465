#include "companions/doctor/url_groups.h"

#include "tools/patterns/pattern_regex.h"

#include <gtest/gtest.h>

namespace {

// Unique URLs of the table's form, which keep their texts.
class Urls {
  public:
    void add(const std::string& url, uint64_t count) {
        texts_.push_back(std::make_unique<std::string>(url));
        UrlInfo& entry = *entries_.emplace_back(std::make_unique<UrlInfo>());
        entry.url = texts_.back()->data();
        entry.count = count;
        pointers_.push_back(&entry);
    }

    std::span<const UrlInfo* const> all() const { return pointers_; }

  private:
    std::vector<std::unique_ptr<std::string>> texts_;
    std::vector<std::unique_ptr<UrlInfo>> entries_;
    std::vector<const UrlInfo*> pointers_;
};

bool takes(const std::string& pattern, const char* url) {
    regex_t regex;
    if (zvr_compile_regex(pattern.c_str(), 1, &regex) != 0) {
        return false;
    }
    int32_t start;
    int32_t end;
    const bool covers = zvr_match_regex(url, &regex, &start, &end) == 0 && start == 0 &&
                        static_cast<size_t>(end) == std::strlen(url);
    regfree(&regex);
    return covers;
}

} // namespace

TEST(UrlGroups, GoByPathAndByFolderWhereThatHasManyPaths) {
    Urls urls;
    for (int i = 0; i < 9; ++i) {
        urls.add("/img/" + std::to_string(i) + ".gif", 1);
    }
    urls.add("/img/logo.png", 1);
    urls.add("/shop/view.jsp?id=1", 5);
    urls.add("/shop/view.jsp?id=2", 7);
    urls.add("/shop/view.jsp", 1);
    const std::vector<UrlGroup> groups = group_urls(urls.all());
    ASSERT_EQ(groups.size(), 3U);
    EXPECT_EQ(groups[0].pattern, "/shop/view\\.jsp*");
    EXPECT_EQ(groups[0].hits.urls, 3U);
    EXPECT_EQ(groups[0].hits.requests, 13U);
    EXPECT_STREQ(groups[0].example->url, "/shop/view.jsp?id=2");
    EXPECT_EQ(groups[1].pattern, "/img/*\\.gif");
    EXPECT_EQ(groups[1].hits.urls, 9U);
    EXPECT_EQ(groups[2].pattern, "/img/logo\\.png");
}

TEST(UrlGroups, APatternTakesEachUrlOfItsGroup) {
    const std::string every_character = [] {
        std::string text = "/";
        for (char c = '!'; c <= '~'; ++c) {
            text += c;
        }
        return text;
    }();
    for (const std::string& url :
         {every_character, std::string("*"), std::string("?*"), std::string("a|b[c]{2}"),
          std::string("/\\.*+(x)^$"), std::string("http://h/p;*"), std::string("/\xe9\x80/\x01"),
          "/" + std::string(3000, '.'), "/a." + std::string(3000, '[') + "?*"}) {
        for (const int paths : {1, 20}) {
            Urls urls;
            urls.add(url, 1);
            for (int i = 1; i < paths; ++i) {
                urls.add(std::to_string(i) + url, 1);
            }
            for (const UrlGroup& group : group_urls(urls.all())) {
                EXPECT_TRUE(takes(group.pattern, group.example->url))
                    << group.pattern << " " << group.example->url;
                EXPECT_EQ(group.pattern.find('|'), std::string::npos);
            }
        }
    }
}
