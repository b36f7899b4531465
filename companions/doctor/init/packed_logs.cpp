#include "companions/doctor/init/packed_logs.h"

#include "base/failure.h"
#include "companions/common/log_file.h"
#include "companions/common/progress_bar.h"
#include "companions/doctor/init/copied_log.h"
#include "companions/doctor/init/log_kind.h"
#include "companions/doctor/init/packed_file.h"
#include "companions/doctor/init/unpacked_names.h"
#include "companions/doctor/init/written_files.h"
#include "tools/config/log_files.h"

#include <cerrno>
#include <filesystem>
#include <fmt/core.h>
#include <map>
#include <memory>
#include <set>
#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr int max_depth = 3; // of archives within archives

std::string folder_of(const std::string& path) {
    return fs::path(path).parent_path();
}

std::string_view folder_in_archive(std::string_view path) {
    const size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? "" : path.substr(0, slash);
}

FileDescriptor open_log(const std::string& path) {
    FileDescriptor file = open_log_at_once(path);
    if (!file.is_open()) {
        fail("Cannot read log '%s': %s", path.c_str(),
             std::generic_category().message(errno).c_str());
    }
    return file;
}

// A packed file, or one within another.
struct Source {
    int descriptor;
    std::string path;  // of the file itself, also for what is in it
    std::string name;  // that its contents get, when they are one
    std::string label; // that stands before the names of all that is in it
    int depth;
};

class Unpacker {
  public:
    Unpacker(const std::vector<std::string>& files, const UnpackOptions& options)
        : options_(options),
          directory_(make_directories(options.directory)), budget_{options.max_size,
                                                                   options.max_size},
          has_many_files_(files.size() > 1), progress_("Unpacked MB:", 0) {
        for (const std::string& file : files) {
            folders_.insert(folder_of(file));
        }
    }

    void add(const std::string& path);
    UnpackedLogs take();

  private:
    void copy_plain(int descriptor, const std::string& path, const std::string& label);
    void unpack(const Source& source);
    void unpack_entry(const Source& source, const PackedEntry& entry);
    std::string free_name(const std::string& name);
    void keep(CopiedLog& log, const std::string& name);
    void count(size_t size);
    void leave_out(const Source& source, const PackedEntry& entry);
    void tell_left_out();

    const UnpackOptions& options_;
    OwnDirectory directory_;
    SizeBudget budget_;
    bool has_many_files_;
    std::set<std::string> folders_;
    std::set<std::string> names_; // given in this run
    uint64_t written_ = 0;        // bytes
    // Entries of a file that are left out: an archive may hold any number.
    struct LeftOut {
        uint64_t count = 0;
        std::string first_entry;
    };
    std::map<std::string, LeftOut> left_out_; // by the file's path
    ProgressBar progress_;
    UnpackedLogs unpacked_;
};

void Unpacker::leave_out(const Source& source, const PackedEntry& entry) {
    LeftOut& left_out = left_out_[source.path];
    if (left_out.count++ == 0) {
        left_out.first_entry = entry.path;
    }
}

void Unpacker::tell_left_out() {
    for (const auto& [path, left_out] : left_out_) {
        unpacked_.findings.push_back(
            {"entry-left-out", Severity::note, path, 0, left_out.first_entry,
             left_out.count == 1
                 ? "It is a link, a device or encrypted, and is left out."
                 : fmt::format(
                       "This and {} more are links, devices or encrypted, and are left out.",
                       left_out.count - 1),
             ""});
    }
}

UnpackedLogs Unpacker::take() {
    tell_left_out();
    return std::move(unpacked_);
}

void Unpacker::add(const std::string& path) {
    const FileDescriptor file = open_log(path);
    const std::string label = folder_label(distinct_part(folder_of(path), folders_));
    if (kind_of_file(file.get()) == FileKind::packed) {
        unpack({file.get(), path, path, label, 1});
    } else {
        copy_plain(file.get(), path, label);
    }
}

void Unpacker::count(size_t size) {
    written_ += size;
    progress_.update(written_ >> 20);
}

// A name that no log of this run has. One that an earlier run has left is replaced only when the
// user says so.
std::string Unpacker::free_name(const std::string& name) {
    std::string free = name;
    for (int number = 2; !names_.insert(free).second; ++number) {
        free = name + "-" + std::to_string(number);
    }
    if (names_.size() > static_cast<size_t>(max_al_files)) {
        fail("More than %d logs are unpacked, which is more than a scenario can name",
             max_al_files);
    }
    if (!options_.may_replace && is_taken(directory_, free)) {
        fail("'%s/%s' is there already; --force replaces it", options_.directory.c_str(),
             free.c_str());
    }
    return free;
}

void Unpacker::keep(CopiedLog& log, const std::string& name) {
    log.keep();
    unpacked_.paths.push_back(options_.directory + "/" + name);
}

void Unpacker::copy_plain(int descriptor, const std::string& path, const std::string& label) {
    constexpr size_t block_size = size_t{1} << 18;
    const std::string name = free_name(flat_name(path, label, false));
    CopiedLog log(directory_, name, budget_);
    const auto block = std::make_unique<char[]>(block_size);
    ssize_t size;
    while ((size = read(descriptor, block.get(), block_size)) > 0) {
        log.append({block.get(), static_cast<size_t>(size)});
        count(static_cast<size_t>(size));
    }
    if (size < 0) {
        fail("Cannot read log '%s': %s", path.c_str(),
             std::generic_category().message(errno).c_str());
    }
    keep(log, name);
}

void Unpacker::unpack(const Source& source) {
    const std::string damage = read_packed_file(
        source.descriptor, [&](const PackedEntry& entry) { unpack_entry(source, entry); });
    if (!damage.empty()) {
        unpacked_.findings.push_back(
            {"damaged-archive", Severity::error, source.path, 0, "",
             "It cannot be unpacked to its end, and what is left of it is missing: " + damage, ""});
    }
}

void Unpacker::unpack_entry(const Source& source, const PackedEntry& entry) {
    const bool is_single = entry.path.empty();
    if (!entry.is_regular) {
        if (!entry.path.ends_with('/')) {
            leave_out(source, entry);
        }
        return;
    }
    Source inner = source;
    inner.name = is_single ? source.name : entry.path;
    if (!is_single) {
        const std::string archive = has_many_files_ ? archive_label(source.name) : "";
        inner.label = join_labels(join_labels(source.label, archive),
                                  folder_label(folder_in_archive(entry.path)));
    }
    const std::string name = free_name(flat_name(inner.name, inner.label, is_single));
    CopiedLog log(directory_, name, budget_);
    for (std::string_view part = entry.read(); !part.empty(); part = entry.read()) {
        log.append(part);
        count(part.size());
    }
    inner.descriptor = log.descriptor();
    ++inner.depth;
    if (kind_of_file(inner.descriptor) == FileKind::packed && inner.depth <= max_depth) {
        names_.erase(name);
        unpack(inner);
    } else {
        keep(log, name);
    }
}

} // namespace

UnpackedLogs unpack_logs(const std::vector<std::string>& files, const UnpackOptions& options) {
    Unpacker unpacker(files, options);
    for (const std::string& file : files) {
        unpacker.add(file);
    }
    return unpacker.take();
}
