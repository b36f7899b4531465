#include "tools/driver/process_signals.h"

#include <csignal>

void take_over_signals() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGCHLD, SIG_DFL);
}
