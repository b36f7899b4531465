#include "base/parallel_tasks.h"

#include <algorithm>
#include <atomic>
#include <pthread.h>
#include <vector>

namespace {

struct Tasks {
    const std::function<void(size_t)>& run;
    size_t count;
    std::atomic<size_t> next = 0; // that no thread has taken yet
};

// Body of a thread; `argv` is the Tasks.
void* run_next_tasks(void* argv) {
    Tasks& tasks = *static_cast<Tasks*>(argv);
    for (size_t i; (i = tasks.next++) < tasks.count;) {
        tasks.run(i);
    }
    return nullptr;
}

} // namespace

void run_tasks(int thread_count, size_t task_count, const std::function<void(size_t)>& task) {
    Tasks tasks = {.run = task, .count = task_count};
    std::vector<pthread_t> helpers;
    const size_t wanted = std::min(static_cast<size_t>(std::max(thread_count, 1)), task_count);
    for (size_t i = 1; i < wanted; ++i) {
        pthread_t helper;
        if (pthread_create(&helper, nullptr, run_next_tasks, &tasks) != 0) {
            break;
        }
        helpers.push_back(helper);
    }
    run_next_tasks(&tasks);
    for (const pthread_t helper : helpers) {
        pthread_join(helper, nullptr);
    }
}
