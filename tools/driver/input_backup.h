#pragma once

#include <string>

// The run's four input files (scenario, settings, both pattern files) are put aside in a directory
// of this process when the run starts, for the checker command to compare, and into the input cache
// directory when the run has succeeded, for the checker command of the next run. No shell runs the
// commands that error lines name, so that no name can be taken for a command.

// Makes the backup directory and copies the inputs into it. Ends the run when any of that fails,
// which includes an input that does not exist.
void back_up_inputs();

// Copies the backup into the input cache directory beside the configuration directory. When that
// fails, for instance because nothing has made the directory, says so in an error line.
void copy_backup_to_cache(const std::string& config_dir);

// Removes the backup directory.
void remove_backup();
