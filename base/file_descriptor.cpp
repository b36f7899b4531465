#include "base/file_descriptor.h"

#include <cerrno>

FILE* open_stream(FileDescriptor file, const char* mode) {
    FILE* stream = file.is_open() ? fdopen(file.get(), mode) : nullptr;
    if (stream != nullptr) {
        file.release(); // the stream closes it
    }
    return stream;
}

bool write_whole(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = write(descriptor, text.data(), text.size());
        if (count > 0) {
            text.remove_prefix(static_cast<size_t>(count));
        } else if (count == 0 || errno != EINTR) {
            return false;
        }
    }
    return true;
}
