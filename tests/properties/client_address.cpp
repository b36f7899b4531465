#include "tools/parse/client_address.h"

#include "tests/properties/properties.h"

namespace {

constexpr uint32_t untouched = 77;

int plain_ip_addr(const char* addr, uint32_t* out) {
    int n[4] = {-1, -1, -1, -1};
    std::sscanf(addr, "%d.%d.%d.%d", &n[0], &n[1], &n[2], &n[3]);
    for (const int number : n) {
        if (number < 0 || number > 255) {
            return -1;
        }
    }
    *out = static_cast<uint32_t>(((n[0] * 256L + n[1]) * 256 + n[2]) * 256 + n[3]);
    return 0;
}

} // namespace

void check_client_address(Choices& choices) {
    std::string text;
    for (int i = 0; i < 4; ++i) {
        text += i == 0 ? "" : ".";
        text +=
            choices.one_in(9) ? choices.text("0123456789", 22) : std::to_string(choices.below(300));
    }
    for (size_t edits = choices.below(4); edits > 0; --edits) {
        choices.edit(text, "0129. +-x\t\r\v");
    }
    uint32_t expected = untouched;
    uint32_t address = untouched;
    const int result = plain_ip_addr(text.c_str(), &expected);
    EXPECT_EQ(zv_ip_addr(text.c_str(), &address), result) << '"' << text << '"';
    EXPECT_EQ(address, expected) << '"' << text << '"';
}
