#include "tools/parse/line_reader.h"

#include "tests/unit_helpers.h"

#include <cstring>
#include <thread>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

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

// A line is the caller's to write to, which must not reach the next one.
Lines read_lines(FILE* file, size_t line_size) {
    LineReader reader(fileno(file), line_size);
    LineText line;
    Lines lines;
    while (reader.next(line)) {
        EXPECT_EQ(std::strlen(line.text), line.size);
        lines.emplace_back(line.text, line.size);
        std::memset(line.text, '!', line.size);
    }
    EXPECT_FALSE(reader.next(line));
    return lines;
}

Lines read_through_pipe(const std::string& bytes, size_t line_size, Choices& choices) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    std::thread writer([&bytes, &choices, end = ends[1]] {
        for (size_t done = 0; done < bytes.size();) {
            const size_t piece = std::min(1 + choices.below(9000), bytes.size() - done);
            done += static_cast<size_t>(write(end, bytes.data() + done, piece));
        }
        close(end);
    });
    FILE* reading = fdopen(ends[0], "r");
    const Lines lines = read_lines(reading, line_size);
    writer.join();
    std::fclose(reading);
    return lines;
}

std::string random_bytes(Choices& choices, size_t usual_length, size_t total) {
    const std::string_view odd("\n\r\0#a \n\n", 8);
    std::string bytes;
    while (bytes.size() < total) {
        bytes += choices.text(odd, 6);
        if (choices.one_in(3)) { // a line around the limit, or around two
            bytes.append((1 + choices.below(2)) * usual_length + 1 - choices.below(3), 'x');
        }
        bytes += choices.one_in(2) ? "\n" : choices.text(odd, 2);
    }
    return bytes;
}

} // namespace

TEST(LineReader, GivesTheLinesOfALineByLineReader) {
    const size_t unlimited = LineReader::unlimited;
    const size_t rows[][3] = {
        // limit, usual length of a line, bytes
        {2, 2, 3000},
        {4096, 4096, 600'000},
        {102400, 102400, 1'500'000},
        {unlimited, 50, 20'000},
        {unlimited, 600'000, 3'000'000},
    };
    Choices choices(3);
    const TemporaryDirectory directory;
    for (const auto& [line_size, usual_length, total] : rows) {
        for (int round = 0; round < 3; ++round) {
            const std::string bytes = random_bytes(choices, usual_length, total);
            FILE* file = std::fopen(directory.write("lines", bytes).c_str(), "r");
            const Lines lines = read_lines(file, line_size);
            std::rewind(file);
            const Lines expected = plain_lines(file, line_size);
            std::fclose(file);
            EXPECT_TRUE(lines == expected) << "limit " << line_size;
            EXPECT_TRUE(read_through_pipe(bytes, line_size, choices) == expected)
                << "limit " << line_size;
        }
    }
}

TEST(LineReader, TellsThatReadingFailed) {
    FILE* directory = std::fopen("/", "r");
    LineReader reader(fileno(directory), 100);
    LineText line;
    EXPECT_FALSE(reader.next(line));
    EXPECT_EXIT(reader.require_whole("test", "access_log"), testing::ExitedWithCode(255), "");
    std::fclose(directory);
}
