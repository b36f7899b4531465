#pragma once

#include "companions/report/scenario_figures.h"

#include <vector>

// Works the mix out from `urls`. `peaks`: of the transactions by their `names`, and behind them
// that of main requests without one.
TrafficMix mix_of(const std::vector<ListedUrl>& urls, const std::vector<std::string_view>& names,
                  const std::vector<PeakStep>& peaks);
