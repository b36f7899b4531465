#pragma once

#include "base/own_directory.h"

#include <string>

// Tells whether a run reads what the checker has looked at. In between, other users can exchange
// the configuration directory, or files in it, for older ones of the run's own user, which nothing
// else tells from the right ones. Every such change shows in the times of the directory that holds
// what was exchanged.
class ReuseGuard {
  public:
    // Notes the states of the configuration directory, of the one above it and of the one in which
    // its name stands, maybe as a link, as they are before the checker is asked. Waits for some
    // hundredths of a second when one of them has just been changed, since the times of files
    // advance in steps.
    explicit ReuseGuard(const std::string& config_directory);

    // Whether `config_dir` is the directory whose state was noted, and all states are the same
    // still. To be asked once what is used again has been opened or read.
    bool holds(const OwnDirectory& config_dir) const;

  private:
    std::string states_; // empty: there is no such directory, or it keeps changing
};
