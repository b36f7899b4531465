#pragma once

#include "companions/common/progress_bar.h"

// Shows how much of the logs of the scenario has been loaded, while it lives. One at a time.
class LoadProgress {
  public:
    LoadProgress();
    ~LoadProgress();
    LoadProgress(const LoadProgress&) = delete;
    LoadProgress& operator=(const LoadProgress&) = delete;

    // For the rest of its life, so that something else can be said. Any thread may call.
    static void hide();
};
