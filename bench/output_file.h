#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <vector>

namespace bench {

// A file written through one large buffer. Room is tested once a line, in end_line(), so that
// the single appends are plain copies: a line may hold at most `longest_line` bytes.
class OutputFile {
  public:
    static constexpr std::size_t longest_line = std::size_t{256} * 1024;

    explicit OutputFile(const std::filesystem::path& path);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    void put(char character) { *end_++ = character; }

    void put(std::string_view text) {
        std::memcpy(end_, text.data(), text.size());
        end_ += text.size();
    }

    void put_number(std::uint64_t number) { end_ = std::to_chars(end_, end_ + 20, number).ptr; }

    void end_line() {
        *end_++ = '\n';
        if (end_ >= flush_mark_)
            flush();
    }

    // Writes what is left; throws std::system_error like every other failing write.
    void close();

  private:
    void flush();

    std::filesystem::path path_;
    int descriptor_;
    std::vector<char> buffer_;
    char* end_;
    char* flush_mark_;
};

} // namespace bench
