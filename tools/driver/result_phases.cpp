#include "tools/driver/result_phases.h"

#include "base/progress.h"
#include "tools/patterns/classification.h"
#include "tools/results/complete_url_list.h"

bool dump_complete_url_list(const OwnDirectory& config_dir) {
    const PhaseProgress progress(
        "Start dumping complete url list to complete_url.list at %s\n",
        "End dumping complete url list to complete_url.list at %s\nTime taken = %ld(sec)\n");
    const bool can_be_read_back = write_complete_url_list(config_dir);
    progress.finish();
    return can_be_read_back;
}

void classify_urls() {
    const PhaseProgress progress(
        "Start filling pattern type index at %s\n",
        "End filling pattern type index at %s\n Total time taken = %ld(sec) \n");
    fill_pattern_index();
    progress.finish();
    sort_by_request_type();
}
