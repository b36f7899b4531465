#pragma once

#include <cstdint>
#include <string>
#include <vector>

// What is decided before a job begins, and all that its stages have to know of the scenario: stages
// that read logs or collapse requests need no installation.

constexpr unsigned plan_format = 1;

struct PlannedLog {
    std::string path;     // absolute
    uint64_t size;        // bytes that are read of it
    uint64_t line_budget; // as InputFileInfo::num_req
    bool is_body_file;    // listed but not loaded
    int32_t instance;     // from 0
    uint64_t samples;     // hash of samples of its bytes (log_samples.h)
    std::string state;    // on the host of the plan, see base/file_state.h
};

// A run of log pieces (tools/load/log_pieces.h) that is loaded at a time.
struct PieceOfWork {
    uint32_t first; // log piece
    uint32_t end;
    uint64_t bytes;
};

struct Plan {
    std::string id;      // its own
    std::string version; // of the program

    std::string directory;      // working directory in which the plan was made
    std::string work_dir;       // of the installation
    std::string scenario;       // as option `scenario` gave it
    std::string replay_profile; // as option `replay_profile` gave it; empty: that of the scenario
    int dump_query_url;         // option

    std::vector<uint64_t> input_hashes; // of the input files' content, in the order of input_names
    std::string settings;               // content of the settings file

    int64_t replay_timezone; // see tools/parse/replay_zone.h
    bool has_zone;           // whether the environment names one in TZ
    std::string zone;        // which
    uint64_t zone_rules;     // hash of what the zone's rules give (log_samples.h)

    uint64_t start_time_stamp; // see tools/config/replay_period.h
    uint64_t end_time_stamp;
    bool is_time_filtered;

    std::vector<PlannedLog> logs; // in load order
    uint64_t log_piece_size;      // see tools/load/log_pieces.h
    std::vector<PieceOfWork> pieces;
};
