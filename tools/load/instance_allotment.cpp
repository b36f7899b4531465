#include "tools/load/instance_allotment.h"

#include "tools/load/input_files.h"

#include <algorithm>
#include <cmath>

namespace {

// A sum that stays at its highest value instead of wrapping: no such number of records can be had.
uint64_t saturating_sum(uint64_t a, uint64_t b) {
    return b > UINT64_MAX - a ? UINT64_MAX : a + b;
}

// Gives a thread its files: those of the instances from `first_instance` on.
void allot_files(parsingThreadArgs& thread, int first_instance) {
    const int end_instance = first_instance + thread.num_instance;
    for (int i = thread.seq_file_start_idx; i < num_al_files; ++i) {
        if (seq_file_path[i].instance_idx >= end_instance) {
            break;
        }
        ++thread.num_seq_file;
        thread.num_req = saturating_sum(thread.num_req, seq_file_path[i].num_req);
    }
}

} // namespace

int allot_instances(parsingThreadArgs* threads, int thread_count) {
    const int instance_per_thread =
        static_cast<int>(std::ceil(static_cast<double>(g_num_instance) / thread_count));
    int allotted_instance = 0;
    int allotted_file_idx = 0;
    for (int i = 0; i < thread_count; ++i) {
        parsingThreadArgs& thread = threads[i];
        thread.num_instance = std::min(instance_per_thread, g_num_instance - allotted_instance);
        if (thread.num_instance == 0) {
            return i;
        }
        thread.thread_idx = i;
        thread.seq_file_start_idx = allotted_file_idx;
        allot_files(thread, allotted_instance);
        allotted_file_idx += thread.num_seq_file;
        allotted_instance += thread.num_instance;
    }
    return thread_count;
}
