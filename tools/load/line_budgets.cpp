#include "tools/load/line_budgets.h"

#include "base/failure.h"
#include "base/logs.h"
#include "base/progress.h"
#include "tools/config/replay_settings.h"
#include "tools/load/input_files.h"
#include "tools/load/line_count.h"
#include "tools/load/thread_count.h"
#include "tools/parse/request_numbers.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <pthread.h>
#include <sys/stat.h>
#include <thread>
#include <utility>
#include <vector>

namespace {

constexpr const char* fname = "process_url_files";

// What the threads that count share: the next file that none of them has taken, and the lines of
// each file, in the order of the list.
struct Counting {
    std::atomic<int> next_file = 0;
    std::vector<uint64_t> line_counts = std::vector<uint64_t>(static_cast<size_t>(num_al_files));
};

bool is_to_be_counted(const InputFileInfo& file) {
    return file.body_flag == 0 && file.num_req == 0;
}

uint64_t count_lines(const InputFileInfo& file) {
    return is_to_be_counted(file) ? zvr_get_total_lines_in_file(file.input_file) : file.num_req;
}

[[noreturn]] void report_no_lines(const InputFileInfo& file) {
    fail("Failed to calculate Number of records from file '%s'", file.input_file);
}

// A mistake in the scenario should not have to wait until all other logs are counted.
void refuse_files_without_lines() {
    for (int i = 0; i < num_al_files; ++i) {
        if (is_to_be_counted(seq_file_path[i]) && !has_lines(seq_file_path[i].input_file)) {
            report_no_lines(seq_file_path[i]);
        }
    }
}

// Body of one thread; `argv` is the Counting.
void* count_files_t(void* argv) {
    Counting& counting = *static_cast<Counting*>(argv);
    for (int i; (i = counting.next_file++) < num_al_files;) {
        counting.line_counts[static_cast<size_t>(i)] = count_lines(seq_file_path[i]);
    }
    return nullptr;
}

// Counts on as many threads as are asked for, or by the processors: not by zvr_get_num_cpu, whose
// error line would come before those of the files. What no thread can be had for, this one does.
std::vector<uint64_t> count_on_threads() {
    const int cpu_count = static_cast<int>(std::thread::hardware_concurrency());
    const int thread_count = g_num_thread != 0 ? g_num_thread : zvr_get_num_threads(cpu_count);
    Counting counting;
    std::vector<pthread_t> helpers;
    for (int i = 1; i < std::min(thread_count, num_al_files); ++i) {
        pthread_t helper;
        if (pthread_create(&helper, nullptr, count_files_t, &counting) != 0) {
            break;
        }
        helpers.push_back(helper);
    }
    count_files_t(&counting);
    for (const pthread_t helper : helpers) {
        pthread_join(helper, nullptr);
    }
    return std::move(counting.line_counts);
}

} // namespace

void fix_line_budgets() {
    DEBUG_LOG(3, fname, "Counting total number of request.");
    const PhaseProgress progress(
        "\tStart Counting total number of request from log files at %s\n",
        "\tEnd Counting total number of request from log files at %s\n\tTotal time taken : %ld\n");
    const bool is_logged = debug_wanted(2); // file by file, in their order
    std::vector<uint64_t> line_counts;
    if (!is_logged) {
        refuse_files_without_lines();
        line_counts = count_on_threads();
    }
    uint64_t total = 0;
    for (int i = 0; i < num_al_files; ++i) {
        InputFileInfo& file = seq_file_path[i];
        if (file.body_flag != 0) {
            continue;
        }
        file.num_req = is_logged ? count_lines(file) : line_counts[static_cast<size_t>(i)];
        if (file.num_req == 0) {
            report_no_lines(file);
        }
        total += file.num_req;
        DEBUG_LOG(3, fname, "File name = %s, cumlative total_request = %lu", file.input_file,
                  total);
    }
    DEBUG_LOG(3, fname, "All access logs counted, total number of request = %lu ", total);
    progress.finish();
}

uint64_t max_requests_of(const InputFileInfo& file) {
    struct stat status;
    if (file.body_flag != 0 || stat(file.input_file, &status) != 0 || !S_ISREG(status.st_mode)) {
        return 0;
    }
    constexpr uint64_t shortest_line = 2;
    const uint64_t lines_of_size = static_cast<uint64_t>(status.st_size) / shortest_line + 1;
    return std::min({file.num_req, lines_of_size, uint64_t{max_requests}});
}
