#include "companions/doctor/check_log_files.h"

#include "base/failure.h"
#include "base/file_descriptor.h"
#include "base/regular_file.h"
#include "companions/common/log_file.h"
#include "companions/doctor/content_form.h"
#include "tools/config/log_files.h"
#include "tools/config/replay_settings.h"
#include "tools/load/input_files.h"
#include "tools/load/line_count.h"
#include "tools/load/log_pieces.h"
#include "tools/load/measured_log.h"
#include "tools/load/thread_count.h"

#include <algorithm>
#include <cerrno>
#include <fmt/core.h>
#include <map>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace {

// Adds what is found about one log after the other.
class LogFiles {
  public:
    explicit LogFiles(FileFindings& findings) : findings_(findings) {}

    void look_at(const NamedLog& log) {
        struct stat status;
        if (stat(log.path.c_str(), &status) != 0) {
            report_unreachable(log, errno);
            return;
        }
        find_twin(log, status);
        if (!S_ISREG(status.st_mode)) {
            report_irregular(log, status);
        } else if (status.st_size == 0) {
            report_empty(log);
        } else {
            look_into(log, status.st_size);
        }
    }

  private:
    static std::string error_text(int error) { return std::generic_category().message(error); }

    void add(const NamedLog& log, Severity severity, const char* id, std::string meaning,
             std::string cure) {
        findings_.add(severity, id, log.line, log.path, std::move(meaning), std::move(cure));
    }

    void report_unreachable(const NamedLog& log, int error) {
        if (error == EACCES) {
            add(log, Severity::error, "log-unreadable",
                "The folder may not be entered, so that a run fails.",
                "Give the user who runs the right to read and enter the folders of the path.");
            return;
        }
        add(log, Severity::error, "log-missing", error_text(error) + ": a run fails.",
            log.path.starts_with('/') ? "Correct the path, or take the line out."
                                      : "Correct the path, which is looked for in the directory "
                                        "that the run is started in, or take the line out.");
    }

    void find_twin(const NamedLog& log, const struct stat& status) {
        const auto [earlier, is_new] = lines_of_file_.emplace(identity_of(status), &log);
        if (!is_new) {
            const NamedLog& twin = *earlier->second;
            add(log, Severity::warning, "log-twice",
                twin.path == log.path
                    ? fmt::format("Line {} names this log, too; its requests count twice.",
                                  twin.line)
                    : fmt::format("Line {} names the same file as {}; its requests count twice.",
                                  twin.line, twin.path),
                "Take one of the lines out.");
        }
    }

    void report_irregular(const NamedLog& log, const struct stat& status) {
        if (S_ISDIR(status.st_mode)) {
            add(log, Severity::error, "log-not-regular", "This is a directory: a run fails.",
                "Name each of its files in a line of its own.");
        } else if (log.line_limit == 0) {
            add(log, Severity::error, "log-not-regular",
                "This is no regular file, and without a number of lines a run fails.",
                "Give a number of lines, which may be far too great, in the third column.");
        } else {
            add(log, Severity::note, "log-not-regular",
                "This is no regular file; it is read until it ends, or has given as many lines.",
                "");
        }
    }

    void report_empty(const NamedLog& log) {
        if (log.line_limit == 0) {
            add(log, Severity::error, "log-empty", "The log is empty: a run fails.",
                "Take the line out, or name the log that is meant.");
        } else {
            add(log, Severity::warning, "log-empty", "The log is empty.",
                "Name the log that is meant.");
        }
    }

    void look_into(const NamedLog& log, off_t size) {
        const FileDescriptor file = open_log_at_once(log.path);
        if (!file.is_open()) {
            add(log, Severity::error, "log-unreadable", error_text(errno) + ": a run fails.",
                "Give the user who runs the right to read it.");
            return;
        }
        std::string sample(content_sample_size, '\0');
        const ssize_t count = pread(file.get(), sample.data(), sample.size(), 0);
        sample.resize(count > 0 ? static_cast<size_t>(count) : 0);
        const ContentForm form = form_of_content(sample);
        if (!form.packed_as.empty()) {
            add(log, Severity::error, "log-compressed",
                fmt::format("The log is packed ({}), and a run reads it as if it were text: no "
                            "line of it counts.",
                            form.packed_as),
                "Unpack it, and name the unpacked file.");
        } else if (form.is_utf16) {
            add(log, Severity::error, "log-utf-16",
                "The log is in UTF-16, of which a run understands no line.",
                "Convert it, iconv -f UTF-16 -t UTF-8 LOG >NEW, and name the new file.");
        } else {
            look_at_ends(log, file, form, size);
        }
    }

    void look_at_ends(const NamedLog& log, const FileDescriptor& file, const ContentForm& form,
                      off_t size) {
        if (form.has_utf8_mark) {
            add(log, Severity::warning, "log-byte-order-mark",
                "The log begins with a byte-order mark, which is read as part of its first field.",
                "Take it out of a copy: tail -c +4 LOG >NEW, and name the new file.");
        }
        char last = '\n';
        const bool has_last = pread(file.get(), &last, 1, size - 1) == 1;
        if (has_last && last != '\n' && log.line_limit == 0) {
            report_open_line(log, size);
        }
    }

    void report_open_line(const NamedLog& log, off_t size) {
        constexpr const char* cure =
            "Add one to a copy of the log, echo >>COPY, and name the copy.";
        constexpr off_t longest_line = 1 << 26; // that is looked through
        if (size <= longest_line &&
            !has_lines(open_regular_file(log.path.c_str()).get(), UINT64_MAX)) {
            add(log, Severity::error, "log-no-line-feed",
                "The log has no line feed at all: a run fails.", cure);
        } else {
            add(log, Severity::warning, "log-no-line-feed",
                "The last line has no line feed and is not read.", cure);
        }
    }

    FileFindings& findings_;
    std::map<FileIdentity, const NamedLog*> lines_of_file_;
};

uint64_t size_of(const char* path) {
    struct stat status;
    const bool is_regular = stat(path, &status) == 0 && S_ISREG(status.st_mode);
    return is_regular ? static_cast<uint64_t>(status.st_size) : 0;
}

// Pieces that any thread can read by itself.
uint64_t count_pieces() {
    uint64_t pieces = 0;
    for (int i = 0; i < num_al_files; ++i) {
        const uint64_t size = size_of(seq_file_path[i].input_file);
        pieces += std::max(uint64_t{1}, (size + log_piece_size - 1) / log_piece_size);
    }
    return pieces;
}

std::string counted(uint64_t count, const char* noun) {
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

// The logs of each instance, as "a_1, a_2; b_1".
std::string list_of_instances() {
    constexpr int most_listed = 20;
    std::string list;
    for (int i = 0; i < num_al_files; ++i) {
        if (i == most_listed) {
            return list + ", and so on";
        }
        const bool begins =
            i > 0 && seq_file_path[i].instance_idx != seq_file_path[i - 1].instance_idx;
        list += i == 0 ? "" : begins ? "; " : ", ";
        list += seq_file_path[i].input_file;
    }
    return list;
}

} // namespace

void check_log_files(FileFindings& findings, const std::vector<NamedLog>& logs) {
    LogFiles files(findings);
    for (const NamedLog& log : logs) {
        if (!log.is_body) {
            files.look_at(log);
        }
    }
}

void check_instances(FileFindings& findings) {
    process_input_file_list2();
    if (num_al_files == 0 || g_num_thread < 0) {
        return;
    }
    const auto asked = static_cast<uint64_t>(choose_thread_count());
    const uint64_t usable = std::max(static_cast<uint64_t>(g_num_instance), count_pieces());
    const bool asks_for_too_many = g_num_thread > 0 && asked > usable;
    if (num_al_files == 1 && !asks_for_too_many) {
        return; // there is nothing to group, nor to choose
    }
    findings.add(
        Severity::note, "instances", 0,
        fmt::format("{} in {}", counted(static_cast<uint64_t>(num_al_files), "log"),
                    counted(static_cast<uint64_t>(g_num_instance), "instance")),
        fmt::format("A request that waits for its session finds it in its own instance, logs in "
                    "one directory with names alike up to the first '_': {}. The run reads them "
                    "with {}.",
                    list_of_instances(), counted(std::min(asked, usable), "thread")),
        asked > usable ? fmt::format("More than {} would find no work.", counted(usable, "thread"))
                       : "");
}
