#include "companions/doctor/init/log_gathering.h"

#include "base/failure.h"
#include "base/file_descriptor.h"
#include "companions/common/log_file.h"
#include "companions/common/progress_bar.h"
#include "companions/doctor/init/log_kind.h"
#include "companions/doctor/init/log_paths.h"
#include "tools/config/log_files.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <set>
#include <system_error>

namespace fs = std::filesystem;

namespace {

constexpr size_t sampled_lines = 30'000; // of all logs together
constexpr size_t least_lines = 60;       // of each log

class Gatherer {
  public:
    explicit Gatherer(const UnpackOptions& unpack) : unpack_(unpack) {}

    GatheredLogs gather(const std::vector<std::string>& arguments);

  private:
    bool is_unpacked(const std::string& path) const;
    void sort_out(const std::string& path);
    void move_companions_of_packed();
    void unpack();
    void read_samples();
    void leave_out(const char* id, Severity severity, const std::string& path,
                   const std::string& meaning, const std::string& cure);
    void append(const Findings& findings);

    const UnpackOptions& unpack_;
    std::vector<std::string> plain_;
    std::vector<std::string> to_unpack_;
    GatheredLogs gathered_;
};

void Gatherer::append(const Findings& findings) {
    gathered_.findings.insert(gathered_.findings.end(), findings.begin(), findings.end());
}

void Gatherer::leave_out(const char* id, Severity severity, const std::string& path,
                         const std::string& meaning, const std::string& cure) {
    gathered_.findings.push_back({id, severity, path, 0, "", meaning, cure});
}

// Whether an earlier run has put it where this one unpacks, too.
bool Gatherer::is_unpacked(const std::string& path) const {
    return !unpack_.directory.empty() && path.starts_with(unpack_.directory + "/");
}

void Gatherer::sort_out(const std::string& path) {
    const FileDescriptor file = open_log_at_once(path);
    if (!file.is_open()) {
        leave_out("unreadable-log", Severity::warning, path,
                  "It cannot be read and is left out: " + std::generic_category().message(errno),
                  "Let this user read it.");
        return;
    }
    const bool can_unpack = !unpack_.directory.empty();
    switch (kind_of_file(file.get())) {
    case FileKind::empty:
        leave_out("empty-log", Severity::note, path, "It is empty and is left out.", "");
        break;
    case FileKind::utf16:
        leave_out("utf16-log", Severity::error, path,
                  "It is in UTF-16, which the tool cannot read, and is left out.",
                  "Convert it: iconv -f UTF-16 -t UTF-8 LOG >NEW_LOG");
        break;
    case FileKind::binary:
        leave_out("binary-file", Severity::warning, path, "It is no text and is left out.", "");
        break;
    case FileKind::packed:
        if (can_unpack) {
            to_unpack_.push_back(path);
        } else {
            leave_out(
                "packed-log", Severity::error, path,
                "It is compressed or an archive, which the tool cannot read, and is left out.",
                "Name a folder with --unpack-to.");
        }
        break;
    case FileKind::plain:
        (can_unpack && !can_be_named(path) ? to_unpack_ : plain_).push_back(path);
    }
}

void Gatherer::move_companions_of_packed() {
    std::set<fs::path> folders;
    for (const std::string& path : to_unpack_) {
        folders.insert(fs::path(path).parent_path());
    }
    const auto stays = [&](const std::string& path) {
        return !folders.contains(fs::path(path).parent_path());
    };
    const auto moved = std::stable_partition(plain_.begin(), plain_.end(), stays);
    to_unpack_.insert(to_unpack_.end(), moved, plain_.end());
    plain_.erase(moved, plain_.end());
    std::ranges::sort(to_unpack_);
}

void Gatherer::unpack() {
    if (to_unpack_.empty()) {
        return;
    }
    if (!can_be_named(unpack_.directory)) {
        fail("A scenario cannot name logs in '%s', as the path holds a blank or is too long",
             unpack_.directory.c_str());
    }
    const UnpackedLogs unpacked = unpack_logs(to_unpack_, unpack_);
    append(unpacked.findings);
    plain_.insert(plain_.end(), unpacked.paths.begin(), unpacked.paths.end());
    std::ranges::sort(plain_);
}

void Gatherer::read_samples() {
    const size_t lines = std::max(least_lines, sampled_lines / std::max<size_t>(1, plain_.size()));
    ProgressBar progress("Looking at the logs", plain_.size());
    for (const std::string& path : plain_) {
        progress.update(gathered_.samples.size());
        if (!can_be_named(path)) {
            leave_out("path-with-blank", Severity::error, path,
                      "A scenario cannot name this path, as it holds a blank or is too long. The "
                      "log is left out.",
                      "Rename it, or name a folder with --unpack-to, into which it is copied.");
            continue;
        }
        LogSample sample = read_log_sample(path, lines);
        if (!sample.ends_with_line_feed) {
            leave_out("no-line-feed", Severity::warning, path,
                      "Its last line does not end in a line feed and is not read.",
                      "If the server has ended it, add the line feed: echo >>LOG");
        }
        if (sample.lines.empty()) {
            leave_out("empty-log", Severity::note, path, "It holds no request and is left out.",
                      "");
        } else {
            gathered_.samples.push_back(std::move(sample));
        }
    }
}

GatheredLogs Gatherer::gather(const std::vector<std::string>& arguments) {
    const FoundLogs found = find_logs(arguments);
    append(found.findings);
    for (const std::string& path : found.paths) {
        if (!is_unpacked(path)) {
            sort_out(path);
        }
    }
    move_companions_of_packed();
    unpack();
    if (plain_.size() > size_t{max_al_files}) {
        fail("%zu logs are more than the %d that a scenario can name; name fewer, or make several "
             "scenarios",
             plain_.size(), max_al_files);
    }
    read_samples();
    return std::move(gathered_);
}

} // namespace

GatheredLogs gather_logs(const std::vector<std::string>& arguments, const UnpackOptions& unpack) {
    return Gatherer(unpack).gather(arguments);
}
