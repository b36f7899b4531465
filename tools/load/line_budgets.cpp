#include "tools/load/line_budgets.h"

#include "tools/config/replay_settings.h"
#include "tools/driver/logs.h"
#include "tools/driver/progress.h"
#include "tools/load/input_files.h"
#include "tools/load/line_count.h"
#include "tools/load/thread_count.h"

#include <algorithm>
#include <atomic>
#include <pthread.h>
#include <thread>
#include <vector>

namespace {

constexpr const char* fname = "process_url_files";

bool is_to_be_counted(const InputFileInfo& file) {
    return file.body_flag == 0 && file.num_req == 0;
}

// Body of one thread; `argv` is the std::atomic<int> that tells the next file that no thread has
// taken.
void* count_files_t(void* argv) {
    auto& next_file = *static_cast<std::atomic<int>*>(argv);
    for (int i; (i = next_file++) < num_al_files;) {
        if (is_to_be_counted(seq_file_path[i])) {
            seq_file_path[i].num_req = zvr_get_total_lines_in_file(seq_file_path[i].input_file);
        }
    }
    return nullptr;
}

// Counts on as many threads as will load the files. What a thread cannot be had for, this one does.
void count_on_threads() {
    const int cpu_count = static_cast<int>(std::thread::hardware_concurrency());
    const int thread_count = g_num_thread != 0 ? g_num_thread : zvr_get_num_threads(cpu_count);
    std::atomic<int> next_file = 0;
    std::vector<pthread_t> helpers;
    for (int i = 1; i < std::min(thread_count, num_al_files); ++i) {
        pthread_t helper;
        if (pthread_create(&helper, nullptr, count_files_t, &next_file) != 0) {
            break;
        }
        helpers.push_back(helper);
    }
    count_files_t(&next_file);
    for (const pthread_t helper : helpers) {
        pthread_join(helper, nullptr);
    }
}

} // namespace

void fix_line_budgets() {
    DEBUG_LOG(3, fname, "Counting total number of request.");
    const PhaseProgress progress(
        "\tStart Counting total number of request from log files at %s\n",
        "\tEnd Counting total number of request from log files at %s\n\tTotal time taken : %ld\n");
    if (!debug_wanted(1)) { // its lines tell of the files in their order
        count_on_threads();
    }
    uint64_t total = 0;
    for (int i = 0; i < num_al_files; ++i) {
        InputFileInfo& file = seq_file_path[i];
        if (file.body_flag != 0) {
            continue;
        }
        if (is_to_be_counted(file)) {
            file.num_req = zvr_get_total_lines_in_file(file.input_file);
        }
        if (file.num_req == 0) {
            fatal_error(fname, "Failed to calculate Number of records from file '%s'",
                        file.input_file);
        }
        total += file.num_req;
        DEBUG_LOG(3, fname, "File name = %s, cumlative total_request = %lu", file.input_file,
                  total);
    }
    DEBUG_LOG(3, fname, "All access logs counted, total number of request = %lu ", total);
    progress.finish();
}
