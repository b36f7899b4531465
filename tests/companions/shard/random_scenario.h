#pragma once

#include "tests/support/test_installation.h"
#include "tests/unit_helpers.h"

// Fills an installation with a scenario of up to four instances and some hundred lines by chance:
// any dialect and session mode, requests that wait for sessions across files, redirects, queries,
// bad, long and odd lines, line budgets, a period, patterns.
void write_random_scenario(Choices& choices, const TestInstallation& installation);
