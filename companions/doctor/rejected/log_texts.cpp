#include "companions/doctor/rejected/log_texts.h"

#include "companions/common/log_file.h"
#include "tools/config/log_files.h"
#include "tools/parse/log_loader.h"

#include <algorithm>

namespace {

constexpr size_t usual_read = 4096; // bytes; as far as the next rejected line, more often than not

} // namespace

FileDescriptor open_log_again(const LogPiece& piece) {
    return open_log_at_once(seq_file_path[piece.file].input_file);
}

LogTexts::LogTexts(const LogPiece& piece, size_t size)
    : piece_(piece), size_(std::min(size, log_line_size - 1)) {
    if (!piece.is_stream) {
        file_ = open_log_again(piece);
    }
}

LogText LogTexts::at(uint32_t offset) {
    if (piece_.is_stream) {
        return {{}, "(a pipe gives its lines only once)"};
    }
    const uint64_t begin = piece_.range.begin + offset;
    const bool is_there =
        begin >= buffer_offset_ && begin + size_ + 2 <= buffer_offset_ + buffer_.size();
    if (offset == UINT32_MAX || (!is_there && !read(begin))) {
        return {{}, "(the line is no longer there)"};
    }
    std::string_view text = std::string_view(buffer_).substr(begin - buffer_offset_);
    text = text.substr(0, std::min(text.find('\n'), log_line_size - 1));
    text.remove_suffix(text.ends_with('\r') ? 1 : 0);
    return {text};
}

bool LogTexts::read(uint64_t offset) {
    constexpr size_t line_end = 2; // carriage return and line feed
    buffer_.resize(std::max(size_ + line_end, usual_read));
    const ssize_t count =
        pread(file_.get(), buffer_.data(), buffer_.size(), static_cast<off_t>(offset));
    buffer_.resize(static_cast<size_t>(std::max(count, ssize_t{0})));
    buffer_offset_ = offset;
    return count > 0;
}
