#include "companions/doctor/content_form.h"
#include "companions/doctor/near_word.h"

#include <gtest/gtest.h>

using namespace std::string_view_literals;

TEST(NearWord, IsTheOneThatWasLikelyMeant) {
    EXPECT_EQ(edit_distance("COOKIENAME", "cookie_name"), 1U);
    EXPECT_EQ(edit_distance("mian", "main"), 1U);
    EXPECT_EQ(edit_distance("", "abc"), 3U);
    const std::vector<std::string> words = {"skip", "auto", "asperlog"};
    EXPECT_EQ(nearest_word("skp", words), "skip");
    EXPECT_EQ(nearest_word("AUTO", words), "auto");
    EXPECT_EQ(nearest_word("as_per_log", words), "asperlog");
    EXPECT_EQ(nearest_word("never", words), "");
    EXPECT_EQ(nearest_word("", words), "");
    EXPECT_EQ(nearest_word(std::string(1'000'000, 's'), words), "");
}

TEST(ContentForm, IsToldByTheFirstBytes) {
    const std::pair<std::string_view, const char*> packed[] = {
        {"\x1f\x8b\x08\0\0"sv, "gzip"},
        {"\xfd"
         "7zXZ\0\0"sv,
         "xz"},
        {"\x28\xb5\x2f\xfd\x24"sv, "zstd"},
        {"BZh91AY"sv, "bzip2"},
        {"PK\x03\x04\x14"sv, "zip"},
    };
    for (const auto& [bytes, name] : packed) {
        EXPECT_EQ(form_of_content(bytes).packed_as, name);
    }
    EXPECT_EQ(form_of_content(std::string(257, 'a') + "ustar").packed_as, "tar");
    EXPECT_TRUE(form_of_content("\xfe\xff\0a"sv).is_utf16);
    EXPECT_TRUE(form_of_content("\0a\0b\0c"sv).is_utf16);
    EXPECT_TRUE(form_of_content("\xef\xbb\xbf#"sv).has_utf8_mark);
    for (const std::string_view text : {""sv, "a"sv, "10.0.0.1 - -"sv, "\0\0\0\0"sv, "\x1f"sv}) {
        const ContentForm form = form_of_content(text);
        EXPECT_TRUE(form.packed_as.empty() && !form.is_utf16 && !form.has_utf8_mark);
    }
}
