#pragma once

// What a run reads before its logs, in the order of the run: the zone of the replay period, the
// replay profile, the field layout and the scenario.

// Sets replay_timezone to the zone that the installation names, else to the process's local one;
// and default_timezone.
void set_replay_timezone();

// Reads the settings and both pattern files of the replay profile; either pattern file may be
// missing or empty. Fails when there are no settings, or as the readers do.
void load_replay_profile();

// The second of these alone: reads one pattern file of the replay profile by `load`, if it is there
// and not empty.
void load_pattern_file(const char* file_name, void (*load)(const char*));
