#pragma once

#include "companions/doctor/finding.h"

// The zone in which the replay period is given.

// The file of the installation that names the zone.
std::string replay_zone_file();

// Adds what is odd about the installation's zone, or about the process's where the installation
// names none. The zone is set, as a run sets it. Returns the line of the file that names it; 0:
// none does.
int check_zone(Findings& findings);

// A moment of the replay period's scale as text: in the zone of the replay, and in UTC where that
// is another one.
std::string shown_moment(unsigned long time_stamp);

// The name of a zone of the system, or a rule that stands for one, as TZ has them.
bool is_known_zone(const std::string& zone);
