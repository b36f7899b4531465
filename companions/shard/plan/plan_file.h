#pragma once

#include "companions/shard/plan/plan.h"

#include <string>

// The plan as a JSON file. Texts that come from outside stand in it byte by byte, each byte as the
// character with its number (U+0000 to U+00FF), so that any program can give them back.

// Fails when it cannot be written whole.
void write_plan(const Plan& plan, const std::string& path);

// Fails when there is none, or it is not whole, or of another format or version of the program.
Plan read_plan(const std::string& path);
