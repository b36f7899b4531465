#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

// The load figures worked out once more in the plainest way, from a list of requests: values are
// sorted to find percentiles, and seconds are counted one by one. Shares nothing with the report.

// A request that counts.
struct PlainVisit {
    long time;           // seconds
    std::string session; // empty: none
    bool is_main = true; // neither inline nor filtered
};

// The values in any order.
void expect_distribution(const nlohmann::json& told, std::vector<long> values);

// Compares sessions, series and rates of the figures with these visits, those of one session and
// second in the order of the logs. Needs times that all lie in steps.
void expect_load(const nlohmann::json& figures, const std::vector<PlainVisit>& visits);
