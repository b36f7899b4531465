#pragma once

#include "base/file_descriptor.h"

#include <compare>
#include <sys/stat.h>
#include <sys/types.h>

// A log is looked at under its name several times: measured, counted, read. Another file may come
// to stand there in between, and what was found of the one does not hold for the other.

// Tells a file from others that may come to stand under its name.
struct FileIdentity {
    dev_t device = 0;
    ino_t inode = 0;

    auto operator<=>(const FileIdentity&) const = default;
};

FileIdentity identity_of(const struct stat& status);

[[noreturn]] void fail_as_changed(const char* log);

// Ends the run when the open log is another file than the one that was measured; else notes its
// state (read_logs.h). `log`: its path as the scenario names it.
void take_measured_log(const char* log, const FileDescriptor& file, const FileIdentity& measured);
