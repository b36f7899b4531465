#pragma once

#include "random_source.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace bench {

// A URL as one request writes it: an entry of the catalogue and the number that distinguishes
// this use from others where the shape of the log asks for it.
struct UrlUse {
    std::size_t index = 0;
    std::uint64_t number = 0;
};

using HexId = std::array<char, 32>;

inline HexId make_hex_id(std::uint64_t seed) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    HexId id;
    std::uint64_t bits = 0;
    for (std::size_t position = 0; position < id.size(); ++position) {
        if (position % 16 == 0)
            bits = mix_bits(seed + position * 0x9e3779b97f4a7c15U + 1);
        id[position] = digits[bits & 15];
        bits >>= 4;
    }
    return id;
}

// One visitor of the site, from the first request to the last.
struct VisitorSession {
    HexId session_id{};
    HexId secondary_id{};
    std::uint32_t address = 0;
    std::size_t agent = 0;
    std::uint32_t requests_left = 0;
    // Requests still to come before a response sets the session cookie.
    std::uint32_t waiting_requests = 0;
    bool has_session_cookie = false;
    // The last response was a redirect; the next request follows it.
    bool follows_redirect = false;
    bool has_referer = false;
    UrlUse redirect_target;
    std::size_t referer = 0;
};

// The identity of a visitor depends on the number alone.
inline VisitorSession make_session(std::uint64_t number) {
    constexpr std::uint32_t private_network = 10U << 24;
    VisitorSession session;
    session.session_id = make_hex_id(number * 2);
    session.secondary_id = make_hex_id(number * 2 + 1);
    session.address = private_network + static_cast<std::uint32_t>(number);
    session.agent = mix_bits(number);
    return session;
}

} // namespace bench
