#include "companions/doctor/init/log_paths.h"

#include "base/failure.h"

#include <algorithm>
#include <filesystem>
#include <glob.h>
#include <set>
#include <sys/stat.h>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

namespace {

constexpr size_t max_files = 20'000; // of all folders; no scenario can name so many

class LogFinder {
  public:
    void add_argument(const std::string& argument);
    FoundLogs take();

  private:
    void add(const fs::path& path);
    void add_file(const fs::path& path);
    void add_directory(const fs::path& path);
    void leave_out(const char* id, const fs::path& path, const std::string& meaning,
                   const std::string& cure);

    std::set<std::pair<dev_t, ino_t>> seen_;
    FoundLogs found_;
};

bool is_hidden(const fs::path& path) {
    return path.filename().string().starts_with('.');
}

std::vector<std::string> matches_of(const std::string& pattern) {
    glob_t found = {};
    std::vector<std::string> paths;
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no thread has been started
    if (glob(pattern.c_str(), 0, nullptr, &found) == 0) {
        paths.assign(found.gl_pathv, found.gl_pathv + found.gl_pathc);
    }
    globfree(&found);
    return paths;
}

void LogFinder::leave_out(const char* id, const fs::path& path, const std::string& meaning,
                          const std::string& cure) {
    found_.findings.push_back({id, Severity::warning, path.string(), 0, "", meaning, cure});
}

void LogFinder::add_argument(const std::string& argument) {
    if (fs::exists(argument)) {
        add(fs::absolute(argument).lexically_normal());
        return;
    }
    const std::vector<std::string> paths = matches_of(argument);
    if (paths.empty()) {
        fail("There is no log, folder or match of a pattern '%s'", argument.c_str());
    }
    for (const std::string& path : paths) {
        add(fs::absolute(path).lexically_normal());
    }
}

void LogFinder::add(const fs::path& path) {
    if (fs::is_directory(path)) {
        add_directory(path);
    } else {
        add_file(path);
    }
}

void LogFinder::add_file(const fs::path& path) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0) {
        return; // a link to nothing
    }
    if (!S_ISREG(status.st_mode)) {
        leave_out("not-a-file", path, "It is no regular file and is left out.", "");
        return;
    }
    if (found_.paths.size() == max_files) {
        fail("More than %zu files in the folders", max_files);
    }
    if (seen_.emplace(status.st_dev, status.st_ino).second) {
        found_.paths.push_back(path);
    }
}

// Links to folders are not followed, so that the search ends.
void LogFinder::add_directory(const fs::path& path) {
    std::error_code error;
    std::error_code ignored; // of a link to nothing
    for (const fs::directory_entry& entry : fs::directory_iterator(path, error)) {
        if (is_hidden(entry.path())) {
            continue;
        }
        if (!entry.is_directory(ignored)) {
            add_file(entry.path());
        } else if (!entry.is_symlink(ignored)) {
            add_directory(entry.path());
        }
    }
    if (error) {
        leave_out("unreadable-folder", path, "The folder cannot be read: " + error.message(),
                  "Let this user read it.");
    }
}

FoundLogs LogFinder::take() {
    std::ranges::sort(found_.paths);
    return std::move(found_);
}

} // namespace

FoundLogs find_logs(const std::vector<std::string>& arguments) {
    LogFinder finder;
    for (const std::string& argument : arguments) {
        finder.add_argument(argument);
    }
    return finder.take();
}

bool can_be_named(const std::string& path) {
    constexpr size_t max_length = 1900; // so that the rest of the scenario's line fits, too
    return path.size() <= max_length &&
           std::ranges::none_of(path, [](char c) { return (c >= 0 && c <= ' ') || c == '\x7f'; });
}
