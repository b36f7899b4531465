#include "companions/common/shown_text.h"

#include <gtest/gtest.h>

TEST(ShownText, MakesVisibleWhatSteersATerminal) {
    EXPECT_EQ(shown_text("a\tb\r\n"), "a\\tb\\r\\n");
    EXPECT_EQ(shown_text("\x1b[2J\x07\x7f"), "\\x1b[2J\\x07\\x7f");
    EXPECT_EQ(shown_text(std::string_view("\0x", 2)), "\\x00x");
    EXPECT_EQ(shown_text("\xc2\x9b"
                         "31m"),
              "\\xc2\\x9b31m"); // the escape sequence's other form
    EXPECT_EQ(shown_text("\xe2\x80\xae"
                         "txt.exe"),
              "\\xe2\\x80\\xaetxt.exe"); // right to left
    EXPECT_EQ(shown_text("\\x1b"), "\\x1b");
}

TEST(ShownText, KeepsLettersAndMarksBytesThatAreNone) {
    EXPECT_EQ(shown_text("Gr\xc3\xbc\xc3\x9f"), "Gr\xc3\xbc\xc3\x9f");
    EXPECT_EQ(shown_text("Gr\xfc\xdf"), "Gr\\xfc\\xdf");
    EXPECT_EQ(shown_text("\xc0\xaf\xed\xa0\x80"), "\\xc0\\xaf\\xed\\xa0\\x80");
    EXPECT_EQ(shown_text("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");
    EXPECT_EQ(shown_text("a\xe2\x82"), "a\\xe2\\x82");
    EXPECT_EQ(valid_utf8("\x1b\xe2\x82\xac\xff"), "\x1b\xe2\x82\xac\\xff");
}

TEST(ShownText, IsCutToAWidth) {
    EXPECT_EQ(shown_text("abcdef", 6), "abcdef");
    EXPECT_EQ(shown_text("abcdefg", 6), "abc...");
    EXPECT_EQ(shown_text("abcdefg", 2), "..");
    EXPECT_EQ(shown_text("\xc3\xbc\xc3\xbc\xc3\xbc\xc3\xbc", 4),
              "\xc3\xbc\xc3\xbc\xc3\xbc\xc3\xbc");
    EXPECT_EQ(shown_text("\xc3\xbc\xc3\xbc\xc3\xbc\xc3\xbc\xc3\xbc", 4), "\xc3\xbc...");
    EXPECT_EQ(shown_text(std::string(1'000'000, '\x1b'), 10), "\\x1b\\x1...");
    EXPECT_EQ(shown_lines("a\x1b\nb\n"), "a\\x1b\nb\n");
}
