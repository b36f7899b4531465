#include "tools/load/line_count.h"
#include "tools/load/read_logs.h"

#include "base/failure.h"
#include "base/file_descriptor.h"
#include "tests/unit_helpers.h"

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <sys/mman.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

FileIdentity identity_of(const std::string& path) {
    struct stat status = {};
    stat(path.c_str(), &status);
    return identity_of(status);
}

uint64_t count_lines(const std::string& path) {
    std::error_code error;
    const uintmax_t size = std::filesystem::file_size(path, error);
    return zvr_get_total_lines_in_file(path.c_str(), identity_of(path), error ? 0 : size);
}

} // namespace

TEST(LineCount, IsTheNumberOfLineFeeds) {
    const TemporaryDirectory directory;
    Choices choices(7);
    std::vector<std::string> texts = {"", "no line feed at the end", std::string(1'000'000, '\n'),
                                      choices.text("\nabcdefgh", 1'200'000)};
    for (int round = 0; round < 60; ++round) {
        texts.push_back(choices.text(std::string_view("\n\n\r\0a", 5), 1000));
    }
    for (const std::string& text : texts) {
        const std::string path = directory.write("lines", text);
        EXPECT_EQ(count_lines(path),
                  static_cast<uint64_t>(std::count(text.begin(), text.end(), '\n')))
            << text.size() << " bytes, '" << text.substr(0, 40) << "'";
    }
    EXPECT_EQ(count_lines(directory.path("missing")), 0U);
    EXPECT_EQ(count_lines(directory.path()), 0U);
}

TEST(LineCount, OfAnotherFileThanWasMeasuredIsRefused) {
    const TemporaryDirectory directory;
    const std::string log = directory.write("log", "a\n");
    const FileIdentity other = identity_of(directory.write("other", "a\n"));
    EXPECT_THROW(zvr_get_total_lines_in_file(log.c_str(), other, 2), Failure);
    EXPECT_THROW(has_lines(log.c_str(), other, 2), Failure);
    EXPECT_TRUE(has_lines(log.c_str(), identity_of(log), 2));
}

// Who owns a log may give it a hole of any size after it was measured.
TEST(LineCount, GrowthIsNotLookedThrough) {
    const TemporaryDirectory directory;
    const std::string log = directory.write("log", "abc");
    std::filesystem::resize_file(log, uintmax_t{1} << 43); // days to read
    EXPECT_FALSE(has_lines(log.c_str(), identity_of(log), 3));
    EXPECT_FALSE(has_lines(log.c_str(), identity_of(log), 0));
    EXPECT_EQ(zvr_get_total_lines_in_file(log.c_str(), identity_of(log), 3), 0U);
    EXPECT_EQ(zvr_get_total_lines_in_file(log.c_str(), identity_of(log), 0), 0U);
    const std::string without_size = "/proc/self/status";
    EXPECT_TRUE(has_lines(without_size.c_str(), identity_of(without_size), 0));
}

// Whose size is not shown, and which goes on behind what is read of such a log.
TEST(LineCount, OfWhatIsTooLargeToBeReadIsRefused) {
    void* const beyond = reinterpret_cast<void*>(most_unshown); // NOLINT: an address as an offset
    const size_t size = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    ASSERT_EQ(
        mmap(beyond, size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0),
        beyond);
    const std::string memory = "/proc/self/mem";
    EXPECT_THROW(zvr_get_total_lines_in_file(memory.c_str(), identity_of(memory), 0), Failure);
    munmap(beyond, size);
    EXPECT_EQ(zvr_get_total_lines_in_file(memory.c_str(), identity_of(memory), 0), 0U);
}

// Later runs must not take results for right that go by another log's lines.
TEST(LineCount, IsNotedLikeWhatIsRead) {
    const TemporaryDirectory directory;
    const std::string counted = directory.write("counted", "a\n");
    const std::string looked_at = directory.write("looked_at", "a\n");
    count_lines(counted);
    has_lines(looked_at.c_str(), identity_of(looked_at), 2);
    for (const std::string& path : {counted, looked_at}) {
        EXPECT_EQ(std::count_if(read_logs().begin(), read_logs().end(),
                                [&](const auto& log) { return log.first == path; }),
                  1);
    }
}

TEST(LineCount, GoesNoFurtherThanItIsToldTo) {
    const TemporaryDirectory directory;
    const std::string path = directory.write("lines", "a\nb\nc\n");
    std::filesystem::resize_file(path, uintmax_t{1} << 43); // days to read
    const FileDescriptor file(open(path.c_str(), O_RDONLY));
    for (const auto& [end, count] : {std::pair{0U, 0U}, {1U, 0U}, {2U, 1U}, {5U, 2U}, {6U, 3U}}) {
        EXPECT_EQ(total_lines_in_open_file("lines", file.get(), end), count) << end;
    }
}

TEST(LineCount, OfAnOpenFileNeedsOneThatCanBeReadAgain) {
    const TemporaryDirectory directory;
    const FileDescriptor file(open(directory.write("lines", "a\nb\n").c_str(), O_RDONLY));
    EXPECT_EQ(total_lines_in_open_file("lines", file.get()), 2U);
    EXPECT_EQ(total_lines_in_open_file("lines", file.get()), 2U);
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const FileDescriptor pipe_end(ends[0]);
    EXPECT_TRUE(write_whole(ends[1], "a\nb\n"));
    close(ends[1]);
    EXPECT_EQ(total_lines_in_open_file("pipe", pipe_end.get()), 0U);
}
