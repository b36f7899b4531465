#include "tests/companions/doctor/packed_files.h"

#include <archive.h>
#include <archive_entry.h>
#include <gtest/gtest.h>

namespace {

la_ssize_t append(archive*, void* made, const void* bytes, size_t size) {
    static_cast<std::string*>(made)->append(static_cast<const char*>(bytes), size);
    return static_cast<la_ssize_t>(size);
}

void write_entry(archive* writer, const MadeEntry& made) {
    archive_entry* entry = archive_entry_new();
    archive_entry_set_pathname(entry, made.path.c_str());
    archive_entry_set_perm(entry, 0644);
    archive_entry_set_size(entry, static_cast<la_int64_t>(made.contents.size()));
    archive_entry_set_filetype(entry, made.is_pipe ? AE_IFIFO : AE_IFREG);
    if (!made.link.empty()) {
        archive_entry_set_filetype(entry, AE_IFLNK);
        archive_entry_set_symlink(entry, made.link.c_str());
    }
    if (!made.hard_link.empty()) {
        archive_entry_set_hardlink(entry, made.hard_link.c_str());
    }
    EXPECT_EQ(archive_write_header(writer, entry), ARCHIVE_OK) << archive_error_string(writer);
    archive_write_data(writer, made.contents.data(), made.contents.size());
    archive_entry_free(entry);
}

std::string written(archive* writer, const std::vector<MadeEntry>& entries,
                    const std::string& filter) {
    if (!filter.empty()) {
        EXPECT_EQ(archive_write_add_filter_by_name(writer, filter.c_str()), ARCHIVE_OK);
    }
    archive_write_set_bytes_in_last_block(writer, 1);
    std::string bytes;
    EXPECT_EQ(archive_write_open(writer, &bytes, nullptr, append, nullptr), ARCHIVE_OK);
    for (const MadeEntry& entry : entries) {
        write_entry(writer, entry);
    }
    EXPECT_EQ(archive_write_free(writer), ARCHIVE_OK);
    return bytes;
}

} // namespace

std::string made_tar(const std::vector<MadeEntry>& entries, const std::string& filter) {
    archive* writer = archive_write_new();
    archive_write_set_format_pax_restricted(writer);
    return written(writer, entries, filter);
}

std::string made_zip(const std::vector<MadeEntry>& entries) {
    archive* writer = archive_write_new();
    archive_write_set_format_zip(writer);
    return written(writer, entries, "");
}

std::string compressed(const std::string& text, const std::string& filter) {
    archive* writer = archive_write_new();
    archive_write_set_format_raw(writer);
    return written(writer, {{"data", text}}, filter);
}
