#pragma once

#include "companions/common/style.h"
#include "companions/doctor/finding.h"

#include <cstdio>
#include <nlohmann/json.hpp>

// The findings for people and for programs. Their texts may hold anything.

// 0: no more than notes; 1: warnings; 2: errors.
int exit_status_of(const Findings& findings);

// Writes the findings, errors first, and how many there are of each severity. Of many with one id,
// the first ones, and how many more there are.
void print_findings(FILE* stream, const Findings& findings);

// An object with the findings, errors first, the count of each severity, and the exit status.
nlohmann::json findings_as_json(const Findings& findings);

// Writes the object as one line of ASCII; bytes that are not UTF-8 are written as \x and two
// digits.
void print_json(FILE* stream, const nlohmann::json& json);
