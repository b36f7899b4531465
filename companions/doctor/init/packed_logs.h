#pragma once

#include "companions/doctor/finding.h"

#include <cstdint>
#include <string>
#include <vector>

// Compressed logs and archives of logs, which the tool does not read, and how they are unpacked.

struct UnpackOptions {
    std::string directory;    // absolute; made where it is not there
    uint64_t max_size;        // bytes of all logs together
    bool may_replace = false; // logs that are there already
};

struct UnpackedLogs {
    std::vector<std::string> paths; // absolute
    Findings findings;              // what was left out or is damaged
};

// Unpacks the packed ones of these files, and copies the others, into one folder under flat names
// (see unpacked_names.h), each with a line feed at its end. Archives within archives are unpacked,
// too; links, devices and folders are left out. Fails when the folder cannot be made, a log is
// there already, the disk is full or the size exceeded; what was unpacked before stays.
UnpackedLogs unpack_logs(const std::vector<std::string>& files, const UnpackOptions& options);
