#include "companions/doctor/init/log_kind.h"

#include <algorithm>
#include <string_view>
#include <unistd.h>

namespace {

using namespace std::string_view_literals;

struct Signature {
    size_t offset;
    std::string_view bytes;
};

constexpr Signature packed_signatures[] = {
    {0, "\x1f\x8b"sv}, // gzip
    {0, "BZh"sv},      // bzip2
    {0, "\xfd"
        "7zXZ\0"sv},             // xz
    {0, "\x28\xb5\x2f\xfd"sv},   // zstd
    {0, "\x04\x22\x4d\x18"sv},   // lz4
    {0, "\x1f\x9d"sv},           // compress
    {0, "PK\x03\x04"sv},         // zip
    {0, "7z\xbc\xaf\x27\x1c"sv}, // 7-zip
    {257, "ustar"sv},            // tar
};

bool is_packed(std::string_view start) {
    return std::ranges::any_of(packed_signatures, [&](const Signature& signature) {
        return start.size() >= signature.offset + signature.bytes.size() &&
               start.substr(signature.offset, signature.bytes.size()) == signature.bytes;
    });
}

// With or without a byte-order mark: half of the bytes of Latin text are zeros.
bool is_utf16(std::string_view start) {
    const auto zeros = std::ranges::count(start, '\0');
    return start.starts_with("\xff\xfe"sv) || start.starts_with("\xfe\xff"sv) ||
           (start.size() > 16 && zeros * 5 > static_cast<std::ptrdiff_t>(start.size()) * 2 &&
            zeros * 5 < static_cast<std::ptrdiff_t>(start.size()) * 3);
}

} // namespace

FileKind kind_of_file(int descriptor) {
    char bytes[1024];
    const ssize_t count = pread(descriptor, bytes, sizeof bytes, 0);
    const std::string_view start(bytes, count > 0 ? static_cast<size_t>(count) : 0);
    if (start.empty()) {
        return FileKind::empty;
    }
    if (is_packed(start)) {
        return FileKind::packed;
    }
    if (is_utf16(start)) {
        return FileKind::utf16;
    }
    const bool has_zeros = start.find('\0') != std::string_view::npos;
    return has_zeros ? FileKind::binary : FileKind::plain;
}
