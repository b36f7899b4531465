#include "companions/doctor/content_form.h"

#include <algorithm>

namespace {

struct Magic {
    const char* name;
    size_t offset;
    std::string_view bytes;
};

using namespace std::string_view_literals;

constexpr Magic magics[] = {
    {"gzip", 0, "\x1f\x8b"sv},
    {"xz", 0,
     "\xfd"
     "7zXZ\0"sv},
    {"zstd", 0, "\x28\xb5\x2f\xfd"sv},
    {"bzip2", 0, "BZh"sv},
    {"zip", 0, "PK\x03\x04"sv},
    {"compress", 0, "\x1f\x9d"sv},
    {"lz4", 0, "\x04\x22\x4d\x18"sv},
    {"lzip", 0, "LZIP"sv},
    {"7z", 0, "7z\xbc\xaf\x27\x1c"sv},
    {"rar", 0, "Rar!\x1a\x07"sv},
    {"tar", 257, "ustar"sv},
};

// Whether every other byte is NUL, as in a text of two bytes a character; `first` is 0 or 1.
bool has_null_at_every_other(std::string_view bytes, size_t first) {
    constexpr size_t least_pairs = 2;
    const size_t pairs = bytes.size() / 2;
    size_t nulls = 0;
    for (size_t i = 0; i < pairs; ++i) {
        nulls += bytes[2 * i + first] == '\0';
        if (bytes[2 * i + 1 - first] == '\0') {
            return false;
        }
    }
    return pairs >= least_pairs && nulls * 10 >= pairs * 8;
}

bool looks_like_utf16(std::string_view bytes) {
    return bytes.starts_with("\xff\xfe") || bytes.starts_with("\xfe\xff") ||
           has_null_at_every_other(bytes, 1) || has_null_at_every_other(bytes, 0);
}

} // namespace

ContentForm form_of_content(std::string_view first_bytes) {
    const auto* const found =
        std::find_if(std::begin(magics), std::end(magics), [&](const Magic& magic) {
            return first_bytes.size() > magic.offset &&
                   first_bytes.substr(magic.offset).starts_with(magic.bytes);
        });
    return {found == std::end(magics) ? "" : found->name, looks_like_utf16(first_bytes),
            first_bytes.starts_with(utf8_mark)};
}
