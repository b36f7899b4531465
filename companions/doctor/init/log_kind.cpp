#include "companions/doctor/init/log_kind.h"

#include "companions/doctor/content_form.h"

#include <unistd.h>

FileKind kind_of_file(int descriptor) {
    char bytes[content_sample_size];
    const ssize_t count = pread(descriptor, bytes, sizeof bytes, 0);
    const std::string_view start(bytes, count > 0 ? static_cast<size_t>(count) : 0);
    const ContentForm form = form_of_content(start);
    if (start.empty()) {
        return FileKind::empty;
    }
    if (!form.packed_as.empty()) {
        return FileKind::packed;
    }
    if (form.is_utf16) {
        return FileKind::utf16;
    }
    const bool has_zeros = start.find('\0') != std::string_view::npos;
    return has_zeros ? FileKind::binary : FileKind::plain;
}
