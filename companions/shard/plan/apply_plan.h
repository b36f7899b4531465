#pragma once

#include "companions/shard/plan/plan.h"

// Sets the settings, the list of logs, the replay period and the time zone of the process to those
// of the plan, as a run does by its installation. To be called once, before threads are started.
// Fails when this host has other rules for the time zone.
void apply_plan(const Plan& plan);

// Sets the environment's time zone to that of the plan.
void apply_zone(const Plan& plan);

// Fails, naming the host, when logs of these numbers are missing here or not those of the plan.
void check_logs(const Plan& plan, const std::vector<size_t>& logs);
