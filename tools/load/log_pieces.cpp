#include "tools/load/log_pieces.h"

#include <algorithm>

uint64_t log_piece_size = uint64_t{4} << 20;

namespace {

// A log may look much larger than what it takes on disk; what is kept of each piece must not fill
// the memory.
uint64_t choose_piece_size(const std::vector<LogExtent>& extents) {
    constexpr uint64_t most_pieces = uint64_t{1} << 18;
    uint64_t size = 0;
    for (const LogExtent& extent : extents) {
        size += extent.size / most_pieces;
    }
    return std::max(size, log_piece_size);
}

void cut_log(int thread, int file, const LogExtent& extent, uint64_t piece_size,
             std::vector<LogPiece>& pieces) {
    uint64_t begin = 0;
    do {
        const bool is_last = extent.size - begin <= piece_size;
        const uint64_t end = is_last ? extent.end : begin + piece_size;
        pieces.push_back({.thread = thread,
                          .file = file,
                          .identity = extent.identity,
                          .range = {begin, end, extent.end},
                          .is_stream = !extent.is_regular,
                          .begins_file = begin == 0,
                          .ends_file = is_last,
                          .ends_thread = false});
        begin = end;
    } while (begin < extent.size);
}

} // namespace

std::vector<LogPiece> cut_logs(const std::vector<LogExtent>& extents,
                               const parsingThreadArgs* threads, int thread_count) {
    std::vector<LogPiece> pieces;
    const uint64_t piece_size = choose_piece_size(extents);
    for (int i = 0; i < thread_count; ++i) {
        const int first_file = threads[i].seq_file_start_idx;
        for (int file = first_file; file < first_file + threads[i].num_seq_file; ++file) {
            cut_log(i, file, extents[static_cast<size_t>(file)], piece_size, pieces);
        }
        pieces.back().ends_thread = true;
    }
    return pieces;
}
