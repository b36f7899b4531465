#include "base/tokenizers.h"

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

TEST(Tokenizers, CutAtRunsOfDelimitersAndTreatTheRestEachInItsWay) {
    std::string cut = "/10::Oct:/2000/:7:8";
    EXPECT_EQ(split(get_tokens1, cut, "/:", 3), (Fields{"10", "Oct", "2000"}));
    EXPECT_STREQ(cut.c_str() + 16, "7");
    std::string untouched = "/a|b||c|d||e|f";
    EXPECT_EQ(split(get_tokens12, untouched, "/|", 4), (Fields{"a", "b", "c", "d"}));
    EXPECT_STREQ(untouched.c_str() + 10, "|e|f");
}
