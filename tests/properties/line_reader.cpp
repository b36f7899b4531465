#include "base/line_reader.h"
#include "base/line_index.h"

#include "tests/properties/properties.h"

#include <cstring>
#include <thread>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

const size_t block_size = LineReader::block_size;
const size_t chunk_size = LineReader::chunk_size;
constexpr char mark = 'a';

Lines plain_lines(FILE* file, size_t line_size) {
    const bool is_unlimited = line_size == LineReader::unlimited;
    size_t capacity = is_unlimited ? 1 : line_size;
    char* line = static_cast<char*>(std::malloc(capacity));
    Lines lines;
    while (is_unlimited ? getline(&line, &capacity, file) != -1
                        : std::fgets(line, static_cast<int>(line_size), file) != nullptr) {
        lines.emplace_back(line, std::strcspn(line, "\n"));
    }
    std::free(line);
    return lines;
}

// The cursor is at the marks of the line, others behind it, and may be left anywhere among them.
void expect_marks(const LineText& line, MarkCursor& marks, bool moves_on) {
    const char* const end = line.text + line.size;
    MarkCursor cursor = marks;
    for (const char* at = line.text; at != end; ++at) {
        if (*at == mark) {
            EXPECT_EQ(*cursor.next++, at);
        }
    }
    EXPECT_GE(*cursor.next, end);
    if (moves_on) {
        marks = cursor;
    }
}

// A line is the caller's to write to, which must not reach the next one.
Lines take_lines(LineReader& reader) {
    LineText line;
    Lines lines;
    while (reader.next(line)) {
        EXPECT_EQ(std::strlen(line.text), line.size);
        expect_marks(line, reader.marks(), lines.size() % 3 == 0);
        lines.emplace_back(line.text, line.size);
        std::memset(line.text, '!', line.size);
    }
    EXPECT_FALSE(reader.next(line));
    return lines;
}

Lines read_lines(int descriptor, size_t line_size) {
    LineReader reader(descriptor, line_size, mark);
    return take_lines(reader);
}

// As threads do that share a file. Nothing is read from `file_size` on.
Lines read_ranges(int descriptor, size_t line_size, size_t file_size, Choices& choices) {
    Lines lines;
    for (size_t begin = 0; begin < file_size;) {
        const bool is_small = choices.any_left() && !choices.one_in(3);
        const size_t size = is_small ? choices.below(9) : file_size / 9 + choices.below(file_size);
        const size_t end = std::min(begin + 1 + size, file_size);
        LineReader reader(descriptor, line_size, {begin, end, file_size}, mark);
        for (std::string& line : take_lines(reader)) {
            lines.push_back(std::move(line));
        }
        begin = end;
    }
    return lines;
}

Lines read_through_pipe(const std::string& bytes, size_t line_size, Choices& choices) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    std::thread writer([&bytes, &choices, end = ends[1]] {
        for (size_t done = 0; done < bytes.size();) {
            const size_t piece = std::min(9000 - choices.below(9000), bytes.size() - done);
            done += static_cast<size_t>(write(end, bytes.data() + done, piece));
        }
        close(end);
    });
    const Lines lines = read_lines(ends[0], line_size);
    writer.join();
    close(ends[0]);
    return lines;
}

std::string random_bytes(Choices& choices, size_t usual_length, size_t total) {
    const std::string_view odd("\n\r\0#a \n\n", 8);
    std::string bytes;
    while (bytes.size() < total && choices.any_left()) {
        bytes += choices.text(odd, 6);
        if (choices.one_in(3)) { // a line around the limit, or around two
            bytes.append((1 + choices.below(2)) * usual_length + 1 - choices.below(4), 'x');
        }
        if (total > block_size && choices.one_in(6)) { // to the end of a block, or nearly
            bytes.resize((bytes.size() / block_size + 1) * block_size - choices.below(4), 'y');
        }
        bytes += choices.one_in(2) ? choices.text(odd, 2) : "\n";
    }
    return bytes;
}

constexpr size_t sizes[][3] = {
    // limit, usual length of a line, bytes
    {102400, 102400, 1'000'000},
    {4096, 4096, 600'000},
    {2, 3, 3000},
    {LineReader::unlimited, 50, 20'000},
    {LineReader::unlimited, 600'000, 2'000'000},
};

struct Indexed {
    std::vector<char*> line_feeds;
    std::vector<char*> marks;
    bool has_nul;

    bool operator==(const Indexed&) const = default;
};

Indexed index(std::string& bytes, decltype(index_lines)& way) {
    const size_t capacity = bytes.size() + line_index_slack;
    Indexed indexed = {std::vector<char*>(capacity), std::vector<char*>(capacity), false};
    LineIndexEnds ends = {indexed.line_feeds.data(), indexed.marks.data()};
    indexed.has_nul = way(bytes.data(), bytes.data() + bytes.size(), mark, ends);
    indexed.line_feeds.resize(static_cast<size_t>(ends.line_feeds - indexed.line_feeds.data()));
    indexed.marks.resize(static_cast<size_t>(ends.marks - indexed.marks.data()));
    return indexed;
}

void expect_plain_index(Choices& choices) {
    const std::string_view alphabet = choices.one_in(2) ? "a\n" : "a\nxxxxxxxxxxxxxxxxxxxxxxx";
    std::string bytes = choices.text(alphabet, 300);
    if (!bytes.empty() && choices.one_in(2)) {
        bytes[choices.below(bytes.size())] = '\0';
    }
    EXPECT_TRUE(index(bytes, index_lines) == index(bytes, index_lines_plainly)) << bytes;
}

} // namespace

void check_line_reader(Choices& choices) {
    expect_plain_index(choices);
    LineReader::chunk_size = choices.one_in(2) ? chunk_size : 1 + choices.below(300);
    const auto& [limit, usual_length, total] = choices.of(sizes);
    const bool is_pipe = choices.one_in(2);
    const std::string bytes = random_bytes(choices, usual_length, total);
    FILE* file = file_of(bytes);
    const Lines lines =
        is_pipe ? read_through_pipe(bytes, limit, choices) : read_lines(fileno(file), limit);
    std::rewind(file);
    EXPECT_TRUE(lines == plain_lines(file, limit)) << "limit " << limit;
    LineReader::block_size = choices.one_in(2) ? block_size : 1 + choices.below(20'000);
    EXPECT_TRUE(read_ranges(fileno(file), limit, bytes.size(), choices) == lines)
        << "limit " << limit << ", blocks of " << LineReader::block_size;
    LineReader::block_size = block_size;
    LineReader::chunk_size = chunk_size;
    std::fclose(file);
}
