#include "tools/parse/tokenizers.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Tokenizer = void(char*, char*[], const char*, int, int*);
using Fields = std::vector<std::string>;

Fields split(Tokenizer* tokenizer, std::string& text, const char* delimiters, int max_fields) {
    char* fields[10];
    int count = -1;
    tokenizer(text.data(), fields, delimiters, max_fields, &count);
    return {fields, fields + count};
}

} // namespace

TEST(Tokenizers, CutAtRunsOfDelimiters) {
    for (Tokenizer* tokenizer : {get_tokens1, get_tokens12}) {
        std::string text = "/10::Oct:/2000/";
        EXPECT_EQ(split(tokenizer, text, "/:", 9), (Fields{"10", "Oct", "2000"}));
    }
}

TEST(Tokenizers, TreatTheTextAfterTheLastFieldEachInItsWay) {
    std::string cut = "a|b|c|d|e";
    EXPECT_EQ(split(get_tokens1, cut, "|", 3), (Fields{"a", "b", "c"}));
    EXPECT_STREQ(cut.c_str() + 6, "d");
    std::string untouched = "a|b|c|d||e|f";
    EXPECT_EQ(split(get_tokens12, untouched, "|", 4), (Fields{"a", "b", "c", "d"}));
    EXPECT_STREQ(untouched.c_str() + 8, "|e|f");
}
