#include "companions/report/url_verdicts.h"

#include "companions/common/text_map.h"
#include "tools/patterns/classification.h"
#include "tools/results/url_list.h"

#include <strings.h>

namespace {

bool has_transaction(const UPInfo& pattern) {
    return strcasecmp(pattern.txn_name, na_string) != 0;
}

} // namespace

UrlVerdict verdict_of(size_t entry) {
    const UrlInfo& url = url_pattern[entry];
    if (url.ignore_flag != 0) {
        return UrlVerdict::inline_left_out;
    }
    const UPInfo* pattern = deciding_pattern(url);
    if (pattern == nullptr) {
        return UrlVerdict::no_pattern;
    }
    if (url.filter_flag != 0) {
        return UrlVerdict::filtered;
    }
    if (url.request_type == REQUEST_TYPE_INLINE) {
        return UrlVerdict::inline_listed;
    }
    return has_transaction(*pattern) ? UrlVerdict::main_with_transaction
                                     : UrlVerdict::main_without_transaction;
}

UrlVerdicts find_verdicts(const RequestTable& table, const CollapsedRequests& collapsed) {
    UrlVerdicts found;
    found.verdicts.resize(table.texts.urls.count());
    found.transactions.resize(table.texts.urls.count(), no_transaction);
    TextMap<uint32_t> numbers;
    for (size_t entry = 0; entry < collapsed.urls.size(); ++entry) {
        const uint32_t id = table.rows[collapsed.urls[entry].first_row].url;
        found.verdicts[id] = verdict_of(entry);
        if (found.verdicts[id] == UrlVerdict::main_with_transaction) {
            const std::string_view name = deciding_pattern(url_pattern[entry])->txn_name;
            const auto number = static_cast<uint32_t>(numbers.size());
            found.transactions[id] = numbers.try_emplace(name, number).first->second;
            if (numbers.size() > found.transaction_names.size()) {
                found.transaction_names.push_back(name);
            }
        }
    }
    return found;
}
