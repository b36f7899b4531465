#include "companions/common/load_progress.h"

#include "tools/config/log_files.h"
#include "tools/load/worker.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <sys/stat.h>

namespace {

std::mutex mutex; // of the two below, which worker threads use
std::optional<ProgressBar> bar;
uint64_t loaded_bytes;

uint64_t bytes_of_logs() {
    uint64_t bytes = 0;
    for (int i = 0; i < num_al_files; ++i) {
        struct stat status;
        if (stat(seq_file_path[i].input_file, &status) == 0 && S_ISREG(status.st_mode)) {
            bytes += static_cast<uint64_t>(status.st_size);
        }
    }
    return bytes;
}

void add_piece(const LogPiece& piece) {
    const std::lock_guard lock(mutex);
    loaded_bytes +=
        piece.is_stream ? 0 : std::min(log_piece_size, piece.range.end - piece.range.begin);
    if (bar) {
        bar->update(loaded_bytes);
    }
}

} // namespace

LoadProgress::LoadProgress() {
    bar.emplace("Reading logs", bytes_of_logs());
    loaded_bytes = 0;
    tell_piece_loaded = add_piece;
}

LoadProgress::~LoadProgress() {
    tell_piece_loaded = nullptr;
    hide();
}

void LoadProgress::hide() {
    const std::lock_guard lock(mutex);
    bar.reset();
}
