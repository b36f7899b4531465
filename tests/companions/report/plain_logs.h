#pragma once

#include "tests/companions/report/plain_load.h"

#include <string>
#include <vector>

// The requests of the sample installation that count, read from its logs by plain code of its own:
// words, times, sessions, sessions given later, redirects followed. Knows no more of the rules than
// the four scenarios ask for. What is main is looked up in the url.list that was worked out by
// hand.
std::vector<PlainVisit> visits_of_sample(const std::string& scenario);
