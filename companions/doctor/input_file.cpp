#include "companions/doctor/input_file.h"

#include "base/file_descriptor.h"
#include "companions/common/shell_word.h"
#include "companions/doctor/content_form.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fmt/core.h>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace {

constexpr const char* iconv_cure = "Convert the file: iconv -f UTF-16 -t UTF-8 FILE >NEW, and put "
                                   "NEW in its place.";

struct CarriageReturns {
    int lines = 0;
    int first_line = 0;
};

// Reads the file to its end.
CarriageReturns count_carriage_returns(int descriptor) {
    CarriageReturns found;
    int line = 1;
    char last = '\0';
    char block[65536];
    ssize_t count;
    while ((count = read(descriptor, block, sizeof block)) > 0) {
        for (ssize_t i = 0; i < count; ++i) {
            if (block[i] == '\n') {
                if (last == '\r' && found.lines++ == 0) {
                    found.first_line = line;
                }
                ++line;
            }
            last = block[i];
        }
    }
    return found;
}

bool is_regular(const std::string& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

void report_carriage_returns(FileFindings& findings, const CarriageReturns& found) {
    if (found.lines > 0) {
        findings.add(
            Severity::warning, "carriage-return", found.first_line,
            fmt::format("{} lines end in CR LF", found.lines),
            "The carriage return before the line feed belongs to the line: a cookie name "
            "or a pattern at its end then fits nothing.",
            fmt::format("Take them out: sed -i 's/\\r$//' {}", shell_word(findings.file())));
    }
}

} // namespace

InputForm check_input_file(FileFindings& findings) {
    const std::string& path = findings.file();
    if (!is_regular(path)) {
        findings.add(Severity::error, "not-regular", 0, "", "This is no regular file.",
                     "Put a text file there.");
        return {};
    }
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.is_open()) {
        findings.add(Severity::error, "unreadable", 0, std::generic_category().message(errno),
                     "The file cannot be opened, so a run fails.",
                     "Give the user who runs the right to read it.");
        return {};
    }
    std::string sample(content_sample_size, '\0');
    const ssize_t size = pread(file.get(), sample.data(), sample.size(), 0);
    sample.resize(size > 0 ? static_cast<size_t>(size) : 0);
    const ContentForm form = form_of_content(sample);
    if (form.is_utf16) {
        findings.add(Severity::error, "utf-16", 1, "",
                     "The file is in UTF-16, of which a run understands no line.", iconv_cure);
        return {.is_readable = true, .is_utf16 = true, .has_utf8_mark = false};
    }
    if (form.has_utf8_mark) {
        findings.add(
            Severity::warning, "byte-order-mark", 1, "",
            "The file begins with a byte-order mark, which is read as part of line 1.",
            fmt::format("Take it out: sed -i '1s/^\\xef\\xbb\\xbf//' {}", shell_word(path)));
    }
    report_carriage_returns(findings, count_carriage_returns(file.get()));
    return {.is_readable = true, .is_utf16 = false, .has_utf8_mark = form.has_utf8_mark};
}
