#pragma once

#include <cstddef>
#include <functional>

// Runs `task(0)` to `task(task_count - 1)`, each once, on the calling thread and as many more as
// make up `thread_count`, and returns when all are done. Any thread may run any task, in any order.
// Where the system refuses a thread, the others do its share. Tasks must not throw.
void run_tasks(int thread_count, size_t task_count, const std::function<void(size_t)>& task);
