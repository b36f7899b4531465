#pragma once

#include "companions/report/load_over_time.h"
#include "companions/report/scenario_figures.h"
#include "companions/report/url_verdicts.h"
#include "tools/urls/session_order.h"

#include <vector>

// What the order of requests by session and time tells. Sessions, steps and minutes are kept, not
// requests.

struct WalkedRequests {
    const RequestTable& table;
    const OrderedRequests& counted; // requests that count, by session and time
    size_t without_session;         // so many of them, the first ones, belong to no session
    const UrlVerdicts& urls;
};

// Fills sessions, over_time (all but the responses, whose steps these are), first_request,
// last_request and to_set of `figures`. Returns the peak minutes of the transactions, by number,
// and behind them that of main requests without one.
std::vector<PeakStep> walk_sessions(const WalkedRequests& requests, const TimeSteps& steps,
                                    ScenarioFigures& figures);
