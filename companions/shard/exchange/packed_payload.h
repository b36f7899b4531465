#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// Payloads of frames, packed by Zstandard. What moves them copies each several times, which costs
// more than packing them once where they are made.

// Appends the packed payload. Returns its size.
size_t append_packed_payload(std::string& to, std::string_view payload);

// Nothing when this is no packed payload, or one larger than any stage writes.
std::optional<std::string> unpacked_payload(std::string_view packed);
