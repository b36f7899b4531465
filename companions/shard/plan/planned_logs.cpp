#include "companions/shard/plan/planned_logs.h"

#include "tools/load/input_files.h"
#include "tools/load/instance_allotment.h"
#include "tools/load/line_budgets.h"
#include "tools/load/measured_log.h"

#include <algorithm>
#include <string>
#include <sys/stat.h>

namespace {

constexpr uint64_t usual_piece_size = uint64_t{256} << 20; // bytes

FileIdentity identity_of(const std::string& path) {
    struct stat status = {};
    stat(path.c_str(), &status); // who opens what is not there fails
    return identity_of(status);
}

uint64_t bytes_of(const LogPiece& piece) {
    return std::min(piece.range.end, piece.range.file_size) - piece.range.begin;
}

uint64_t total_size(const std::vector<PlannedLog>& logs) {
    uint64_t total = 0;
    for (const PlannedLog& log : logs) {
        total += log.size;
    }
    return total;
}

} // namespace

std::vector<LogPiece> cut_planned_logs(const std::vector<PlannedLog>& logs) {
    if (logs.empty()) {
        return {};
    }
    std::vector<LogExtent> extents;
    extents.reserve(logs.size());
    for (const PlannedLog& log : logs) {
        extents.push_back({.identity = identity_of(log.path),
                           .is_regular = true,
                           .size = log.size,
                           .end = log.size});
    }
    const int thread_count = logs.back().instance + 1;
    std::vector<parsingThreadArgs> threads(static_cast<size_t>(thread_count));
    allot_instances(threads.data(), thread_count);
    return cut_logs(extents, threads.data(), thread_count);
}

uint64_t choose_log_piece_size(const std::vector<PlannedLog>& logs, uint64_t piece_count) {
    return piece_count == 0 ? log_piece_size
                            : std::min(log_piece_size, total_size(logs) / piece_count + 1);
}

std::vector<PieceOfWork> plan_pieces(const std::vector<PlannedLog>& logs, uint64_t count) {
    const std::vector<LogPiece> log_pieces = cut_planned_logs(logs);
    const uint64_t wanted = count == 0 ? usual_piece_size : total_size(logs) / count + 1;
    std::vector<PieceOfWork> pieces;
    for (uint32_t i = 0; i < log_pieces.size(); ++i) {
        if (pieces.empty() || pieces.back().bytes >= wanted) {
            pieces.push_back({i, i, 0});
        }
        pieces.back().end = i + 1;
        pieces.back().bytes += bytes_of(log_pieces[i]);
    }
    return pieces;
}
