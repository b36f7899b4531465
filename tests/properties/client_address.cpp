#include "tools/parse/client_address.h"

#include "tests/properties/properties.h"

#include <array>

namespace {

constexpr uint32_t untouched = 77;

// What may stand before the digits of a number: these change nothing, those make it none.
constexpr std::array good_starts = {
    "", " ", "\t\n\v\f\r", "+", "0", " +00", "0000000000000000000000"};
constexpr std::array bad_starts = {"x", "-1", "+ ", "--"};

} // namespace

// The text is composed of numbers that are known, so that the answer does not have to be read from
// it.
void check_client_address(Choices& choices) {
    std::string text;
    bool is_address = true;
    uint64_t expected = 0;
    for (int i = 0; i < 4; ++i) {
        const std::string separator = choices.one_in(30) ? choices.text(" ,:x", 2) : ".";
        const bool is_bad = choices.one_in(40);
        const size_t number = choices.below(choices.one_in(9) ? 3000 : 260);
        text += i == 0 ? "" : separator;
        text += is_bad ? choices.of(bad_starts) : choices.one_in(6) ? choices.of(good_starts) : "";
        text += std::to_string(number);
        expected = expected * 256 + number;
        is_address = is_address && !is_bad && number < 256 && (i == 0 || separator == ".");
    }
    text += choices.of(std::array{"", ".", ":80", " 1", "/24", "x", "-"});
    uint32_t address = untouched;
    EXPECT_EQ(zv_ip_addr(text.c_str(), &address), is_address ? 0 : -1) << '"' << text << '"';
    EXPECT_EQ(address, is_address ? expected : untouched) << '"' << text << '"';
}
