#pragma once

// Reads the settings file and sets the values of replay_settings.h and the field positions of
// field_layout.h. Fails when the file cannot be opened, a value is
// malformed or too long, or sessions go by cookie and no cookie is named.
void read_replay_prof_setting(const char* replay_setting_file);
