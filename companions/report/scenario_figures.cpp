#include "companions/report/scenario_figures.h"

const char* const status_class_names[status_class_count] = {"1xx", "2xx", "3xx",
                                                            "4xx", "5xx", "other"};

bool Funnel::adds_up() const {
    const uint64_t bad_sum = bad_lines.unclosed_field + bad_lines.too_few_fields +
                             bad_lines.invalid_client_address + bad_lines.invalid_request_line +
                             bad_lines.invalid_time + bad_lines.missing_fields;
    const uint64_t line_sum =
        blank + comments + bad + before_period + after_period + beyond_waiting_limit + loaded;
    const uint64_t request_sum = redirect_follow_ups + without_session + counted;
    const uint64_t counted_sum = inline_left_out + filtered + inline_listed +
                                 main_with_transaction + main_without_transaction + no_pattern;
    return bad == bad_sum && lines == line_sum && loaded == request_sum && counted == counted_sum;
}
