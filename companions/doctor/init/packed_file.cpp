#include "companions/doctor/init/packed_file.h"

#include <archive.h>
#include <archive_entry.h>
#include <cstdint>
#include <memory>
#include <unistd.h>

namespace {

struct CloseArchive {
    void operator()(archive* opened) const { archive_read_free(opened); }
};
using Archive = std::unique_ptr<archive, CloseArchive>;

// A damaged entry, as opposed to what the handler of entries throws.
struct Damage {
    std::string reason;
};

std::string reason_of(archive* opened) {
    const char* reason = archive_error_string(opened);
    return reason == nullptr ? "it cannot be read" : reason;
}

// Forms that the library reads by itself: it would start other programs for further ones.
Archive make_reader(bool knows_archives) {
    Archive reader(archive_read_new());
    archive_read_support_filter_gzip(reader.get());
    archive_read_support_filter_bzip2(reader.get());
    archive_read_support_filter_xz(reader.get());
    archive_read_support_filter_lzma(reader.get());
    archive_read_support_filter_zstd(reader.get());
    archive_read_support_filter_lz4(reader.get());
    archive_read_support_filter_compress(reader.get());
    archive_read_support_filter_lzip(reader.get());
    if (knows_archives) {
        archive_read_support_format_tar(reader.get());
        archive_read_support_format_zip(reader.get());
        archive_read_support_format_7zip(reader.get());
    }
    archive_read_support_format_raw(reader.get());
    return reader;
}

std::string path_of(archive_entry* entry) {
    const char* path = archive_entry_pathname(entry);
    if (path == nullptr) {
        path = archive_entry_pathname_utf8(entry);
    }
    return path == nullptr ? "unnamed" : path;
}

// Bytes that no form claims are given as they are.
bool is_packed(archive* reader) {
    return archive_format(reader) != ARCHIVE_FORMAT_RAW ||
           archive_filter_code(reader, 0) != ARCHIVE_FILTER_NONE;
}

std::string_view read_part(archive* reader, char* buffer, size_t size) {
    const la_ssize_t count = archive_read_data(reader, buffer, size);
    if (count < 0) {
        throw Damage{reason_of(reader)};
    }
    return {buffer, static_cast<size_t>(count)};
}

PackedEntry entry_of(archive* reader, archive_entry* entry) {
    PackedEntry packed;
    const bool is_archive = archive_format(reader) != ARCHIVE_FORMAT_RAW;
    packed.path = is_archive ? path_of(entry) : "";
    packed.is_regular =
        archive_entry_filetype(entry) == AE_IFREG && archive_entry_hardlink(entry) == nullptr &&
        archive_entry_symlink(entry) == nullptr && archive_entry_is_encrypted(entry) == 0;
    return packed;
}

// Why it could not be read to its end, and how many entries it has up to there.
struct ReadEntries {
    std::string damage;
    uint64_t count = 0;
};

ReadEntries read_entries(int descriptor, bool knows_archives,
                         const std::function<void(const PackedEntry& entry)>& handle) {
    constexpr size_t block_size = size_t{1} << 18;
    const Archive reader = make_reader(knows_archives);
    if (lseek(descriptor, 0, SEEK_SET) != 0 ||
        archive_read_open_fd(reader.get(), descriptor, block_size) != ARCHIVE_OK) {
        return {reason_of(reader.get())};
    }
    ReadEntries entries;
    const auto buffer = std::make_unique<char[]>(block_size);
    archive_entry* entry = nullptr;
    int status;
    while ((status = archive_read_next_header(reader.get(), &entry)) == ARCHIVE_OK ||
           status == ARCHIVE_WARN) {
        ++entries.count;
        if (!is_packed(reader.get())) {
            return {"its form is not known", entries.count};
        }
        PackedEntry packed = entry_of(reader.get(), entry);
        packed.read = [&] { return read_part(reader.get(), buffer.get(), block_size); };
        try {
            handle(packed);
        } catch (const Damage& damage) {
            return {damage.reason, entries.count};
        }
    }
    return {status == ARCHIVE_EOF ? "" : reason_of(reader.get()), entries.count};
}

} // namespace

std::string read_packed_file(int descriptor,
                             const std::function<void(const PackedEntry& entry)>& handle) {
    const ReadEntries entries = read_entries(descriptor, true, handle);
    // A log that begins with NUL bytes, as one does that was cut while it was written, looks like
    // the end of a tar.
    const bool is_no_archive = entries.count == 0 && entries.damage.empty();
    return is_no_archive ? read_entries(descriptor, false, handle).damage : entries.damage;
}
