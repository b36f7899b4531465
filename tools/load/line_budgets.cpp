#include "tools/load/line_budgets.h"

#include "base/failure.h"
#include "base/file_state.h"
#include "base/logs.h"
#include "base/progress.h"
#include "tools/load/input_files.h"
#include "tools/load/line_count.h"
#include "tools/load/read_logs.h"
#include "tools/parse/line_outcome.h"

#include <cstdint>
#include <sys/stat.h>

namespace {

constexpr const char* fname = "process_url_files";

bool is_to_be_counted(const InputFileInfo& file) {
    return file.body_flag == 0 && file.num_req == 0;
}

uint64_t count_lines(const InputFileInfo& file, const LogExtent& extent) {
    return is_to_be_counted(file)
               ? zvr_get_total_lines_in_file(file.input_file, extent.identity, extent.size)
               : file.num_req;
}

[[noreturn]] void report_no_lines(const InputFileInfo& file) {
    fail("Failed to calculate Number of records from file '%s'", file.input_file);
}

// A mistake in the scenario should not have to wait until all other logs are counted.
void refuse_files_without_lines(const std::vector<LogExtent>& extents) {
    for (int i = 0; i < num_al_files; ++i) {
        const InputFileInfo& file = seq_file_path[i];
        const LogExtent& extent = extents[static_cast<size_t>(i)];
        if (is_to_be_counted(file) && !has_lines(file.input_file, extent.identity, extent.size)) {
            report_no_lines(file);
        }
    }
}

// File by file, as the debug log tells.
void count_files(const std::vector<LogExtent>& extents) {
    uint64_t total = 0;
    for (int i = 0; i < num_al_files; ++i) {
        InputFileInfo& file = seq_file_path[i];
        if (file.body_flag != 0) {
            continue;
        }
        file.num_req = count_lines(file, extents[static_cast<size_t>(i)]);
        if (file.num_req == 0) {
            report_no_lines(file);
        }
        total += file.num_req;
        DEBUG_LOG(3, fname, "File name = %s, cumlative total_request = %lu", file.input_file,
                  total);
    }
    DEBUG_LOG(3, fname, "All access logs counted, total number of request = %lu ", total);
}

// Only with a line budget that the scenario gave may the file be a stream, which is read once.
LogExtent measure(const InputFileInfo& file) {
    struct stat status = {};
    const bool is_there = stat(file.input_file, &status) == 0;
    note_read_log(file.input_file, is_there ? state_text(status) : "missing");
    const bool is_regular = is_there && S_ISREG(status.st_mode);
    const bool may_be_stream = is_there && !is_regular && file.num_req != 0;
    const uint64_t size = is_regular ? static_cast<uint64_t>(status.st_size) : 0;
    return {identity_of(status), !may_be_stream, size, size != 0 ? size : unshown_size};
}

} // namespace

bool lines_are_told() {
    return debug_wanted(2) || log_line_observer != nullptr;
}

std::vector<LogExtent> fix_line_budgets() {
    DEBUG_LOG(3, fname, "Counting total number of request.");
    const PhaseProgress progress(
        "\tStart Counting total number of request from log files at %s\n",
        "\tEnd Counting total number of request from log files at %s\n\tTotal time taken : %ld\n");
    std::vector<LogExtent> extents;
    extents.reserve(static_cast<size_t>(num_al_files));
    for (int i = 0; i < num_al_files; ++i) {
        extents.push_back(measure(seq_file_path[i]));
    }
    if (lines_are_told()) {
        count_files(extents);
    } else {
        refuse_files_without_lines(extents);
    }
    progress.finish();
    return extents;
}
