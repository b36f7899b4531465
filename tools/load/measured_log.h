#pragma once

#include "base/file_descriptor.h"

#include <compare>
#include <cstdint>
#include <sys/stat.h>
#include <sys/types.h>

// A log is looked at under its name several times: measured, counted, read. Another file may come
// to stand there in between, and what was found of the one does not hold for the other.

// Tells a file from others that may come to stand under its name.
struct FileIdentity {
    dev_t device = 0;
    ino_t inode = 0;

    // NOLINTNEXTLINE(modernize-use-nullptr): no pointer is compared
    auto operator<=>(const FileIdentity&) const = default;
};

FileIdentity identity_of(const struct stat& status);

[[noreturn]] void fail_as_changed(const char* log);

// Bytes that are read of a log whose size the system does not show, as of what it makes up itself
// when it is read: some of that has no end.
constexpr uint64_t most_unshown = uint64_t{64} << 20;

// Size of a log that showed none when it was measured, in what a log is cut by (FileRange). No file
// can have it.
constexpr uint64_t unshown_size = UINT64_MAX;

// Offset at which an open log ends that was of this size when it was measured, whatever it has
// gained since: who writes to it could keep a run going. One that showed no size ends at
// most_unshown when it shows none now, else at 0, for it was empty then.
uint64_t end_of_measured(int descriptor, uint64_t size);

// Ends the run when an open log that showed no size when it was measured holds more than is read of
// it. `log`: its path as the scenario names it.
void refuse_more_than_unshown(const char* log, int descriptor);

// Ends the run when the open log is another file than the one that was measured; else notes its
// state (read_logs.h). `log`: its path as the scenario names it.
void take_measured_log(const char* log, const FileDescriptor& file, const FileIdentity& measured);
