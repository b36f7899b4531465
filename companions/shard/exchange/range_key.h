#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Where a request stands among the ranges of sessions that are collapsed apart. Keys are ordered as
// sessions are, byte by byte. All requests of a session have one key, so that no range cuts it in
// two; those without a session have one for each second, as nothing ties them together.

// Whether a session's text tells a session: no empty cookie value, nor address 0.
bool tells_session(std::string_view session);

// `time`: on the scale of tools/parse/timestamps.h. Goes by session_mode.
std::string range_key(std::string_view session, uint64_t time);

// Keys as labels and command lines have them, in hexadecimal digits, which keep their order. The
// second fails with what is no such text.
std::string hex_text(std::string_view key);
std::string key_of_hex(std::string_view digits);
