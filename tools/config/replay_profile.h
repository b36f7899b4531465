#pragma once

// The replay profile of the run. Both are set by the driver while the command line is read or, by
// the scenario's name, after it; only read afterwards, never freed.

extern char* replay_profile;     // relative name; null until known
extern char* replay_profile_dir; // directory; null until known
