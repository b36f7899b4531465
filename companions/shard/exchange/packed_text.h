#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// How numbers and texts stand in a payload: a number in groups of seven bits, the lowest first, the
// highest bit set in all but the last byte; a text as its size and its bytes.

inline void append_packed(std::string& to, uint64_t number) {
    while (number > 0x7f) {
        to.push_back(static_cast<char>(number | 0x80));
        number >>= 7;
    }
    to.push_back(static_cast<char>(number));
}

inline void append_packed(std::string& to, std::string_view text) {
    append_packed(to, uint64_t{text.size()});
    to += text;
}

// Takes a payload apart. What does not fit makes it fail (fail_as_damaged).
class PackedReader {
  public:
    explicit PackedReader(std::string_view payload) : rest_(payload) {}

    uint64_t number();
    uint32_t word();         // a number of 32 bits
    std::string_view text(); // part of the payload
    bool at_end() const { return rest_.empty(); }

  private:
    std::string_view rest_;
};
