#pragma once

#include <cstddef>

namespace bench {

// Touches that much memory and gives it back, in a process of its own. A virtual machine's host
// takes memory that has been free for a while back from it, and the next process to touch it then
// pays for the host's work: more than for its own on most of them. After a warm-up, as with a warm
// page cache, every command meets the same memory. Does nothing for 0.
void touch_memory(std::size_t bytes);

} // namespace bench
