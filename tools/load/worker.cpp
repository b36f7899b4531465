#include "tools/load/worker.h"

#include "base/file_descriptor.h"
#include "tools/config/log_files.h"
#include "tools/load/log_piece_reader.h"

#include <cstdint>

void (*tell_worker_failed)(const Failure& failure) = nullptr;
void (*tell_piece_loaded)(const LogPiece& piece) = nullptr;

namespace {

// Keeps of a loaded piece what its thread wants.
void settle_batch(Worker& worker, PieceQueue& queue, LoadedPiece& loaded, const LogPiece& piece) {
    queue.thread.settle_batch(loaded.batch, static_cast<uint32_t>(queue.next), piece,
                              [&](int64_t max_lines) {
                                  reload_piece(worker.parsing, piece, max_lines, loaded.batch);
                                  loaded.worker = worker.number;
                              });
}

// Reads and settles the next piece of a loading thread line by line.
void load_next_in_order(Worker& worker, PieceQueue& queue) {
    LoadingThread& thread = queue.thread;
    const LogPiece& piece = worker.loading.pieces[queue.next];
    LoadedPiece& loaded = worker.loading.loaded[queue.next];
    loaded.worker = worker.number;
    thread.begin(piece);
    if (thread.wants_more()) {
        const FileDescriptor file = open_log(piece);
        thread.begin_file(piece);
        load_piece(worker.parsing, piece, file, thread.lines_before(), thread.lines_left(),
                   loaded.batch, [&] {
                       return thread.settle_events(loaded.batch, static_cast<uint32_t>(queue.next),
                                                   piece);
                   });
    }
    thread.end(piece, loaded.batch);
}

// Settles the next piece of a queue, which is loaded; a stream is read only now, as it cannot be
// read again.
void settle_next(Worker& worker, PieceQueue& queue) {
    const LogPiece& piece = worker.loading.pieces[queue.next];
    if (piece.is_stream) {
        load_next_in_order(worker, queue);
        return;
    }
    LoadedPiece& loaded = worker.loading.loaded[queue.next];
    LoadingThread& thread = queue.thread;
    if (!loaded.is_begun) {
        thread.begin(piece);
    }
    if (!thread.wants_more()) {
        loaded.batch = {};
        thread.end(piece, loaded.batch);
        return;
    }
    if (!loaded.is_begun && loaded.could_be_opened) {
        thread.begin_file(piece);
    }
    if (loaded.failure) {
        fail("%s", loaded.failure->message.c_str());
    }
    settle_batch(worker, queue, loaded, piece);
    thread.end(piece, loaded.batch);
}

// The calling worker settles all pieces that can be settled now, unless another one is at it.
void settle_queue(Worker& worker, PieceQueue& queue, LoadedPiece& newly_loaded) {
    std::unique_lock lock(queue.mutex);
    newly_loaded.is_loaded = true;
    if (queue.is_settling) {
        return;
    }
    queue.is_settling = true;
    while (queue.next != queue.end && worker.loading.loaded[queue.next].is_loaded &&
           !worker.loading.failure.has_failed()) {
        lock.unlock();
        settle_next(worker, queue);
        lock.lock();
        ++queue.next;
    }
    queue.is_settling = false;
}

// Begins with a piece before it is loaded, if its turn has come: who feeds a pipe, or watches a
// long run, is told in time.
void begin_if_turn(PieceQueue& queue, size_t number, const LogPiece& piece, LoadedPiece& loaded) {
    const std::lock_guard lock(queue.mutex);
    if (queue.next == number && !queue.is_settling) {
        queue.thread.begin(piece);
        loaded.is_begun = true;
    }
}

void load_unless_it_fails(Worker& worker, PieceQueue& queue, const LogPiece& piece,
                          LoadedPiece& loaded) {
    try {
        const FileDescriptor file = open_log(piece);
        loaded.could_be_opened = true;
        if (loaded.is_begun) {
            queue.thread.begin_file(piece);
        }
        load_piece(worker.parsing, piece, file, 0, line_budget(seq_file_path[piece.file]),
                   loaded.batch, {});
    } catch (const Failure& failure) {
        loaded.failure = failure; // it counts when the turn of the piece has come
    }
}

// A piece that its thread may want. Its lines are counted from its own start.
void load_ahead(Worker& worker, size_t number) {
    const LogPiece& piece = worker.loading.pieces[number];
    LoadedPiece& loaded = worker.loading.loaded[number];
    PieceQueue& queue = worker.loading.queues[static_cast<size_t>(piece.thread)];
    loaded.worker = worker.number;
    if (!piece.is_stream) {
        begin_if_turn(queue, number, piece, loaded);
        const bool is_log = seq_file_path[piece.file].body_flag == 0;
        if (is_log && (!loaded.is_begun || queue.thread.wants_more())) {
            load_unless_it_fails(worker, queue, piece, loaded);
        }
    }
    settle_queue(worker, queue, loaded);
}

// There are at least as many workers as loading threads, which are told of as they start.
void start_thread_of(Worker& worker) {
    if (worker.number < worker.loading.queues.size()) {
        worker.loading.queues[worker.number].thread.start();
    }
}

void tell_loaded(const LogPiece& piece) {
    if (tell_piece_loaded != nullptr) {
        tell_piece_loaded(piece);
    }
}

void load_pieces(Worker& worker) {
    Loading& loading = worker.loading;
    const auto may_go_on = [&] { return !loading.failure.has_failed(); };
    if (!loading.is_told_in_order) {
        for (size_t i; may_go_on() && (i = loading.next++) < loading.pieces.size();) {
            load_ahead(worker, i);
            tell_loaded(loading.pieces[i]);
        }
        return;
    }
    for (size_t i; may_go_on() && (i = loading.next++) < loading.queues.size();) {
        PieceQueue& queue = loading.queues[i];
        for (; may_go_on() && queue.next != queue.end; ++queue.next) {
            load_next_in_order(worker, queue);
            tell_loaded(loading.pieces[queue.next]);
        }
    }
}

} // namespace

void WorkerFailure::report(const Failure& failure) {
    if (has_failed_.exchange(true)) {
        return;
    }
    first_ = failure;
    if (tell_worker_failed != nullptr) {
        tell_worker_failed(failure);
    }
}

void WorkerFailure::throw_if_any() const {
    if (has_failed_) {
        fail("%s", first_.message.c_str());
    }
}

void* process_url_files_t(void* argv) {
    Worker& worker = *static_cast<Worker*>(argv);
    try {
        start_thread_of(worker);
        load_pieces(worker);
    } catch (const Failure& failure) {
        worker.loading.failure.report(failure);
    }
    return nullptr;
}
