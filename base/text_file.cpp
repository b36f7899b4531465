#include "base/text_file.h"

#include <fcntl.h>
#include <utility>

TextFile::TextFile(const std::string& path, size_t line_size)
    : TextFile(FileDescriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC)), path, line_size) {}

TextFile::TextFile(FileDescriptor file, const std::string& path, size_t line_size)
    : path_(path), file_(std::move(file)), lines_(file_.get(), line_size) {}

bool TextFile::next(LineText& line) {
    if (lines_.next(line)) {
        return true;
    }
    lines_.require_whole(path_.c_str());
    return false;
}
