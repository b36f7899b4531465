#pragma once

#include "tools/urls/request_collapse.h"

#include <cstdint>
#include <string_view>
#include <vector>

// What the patterns make of each unique URL, to be looked up for each of its requests.

enum class UrlVerdict : uint8_t {
    inline_left_out,
    filtered,
    inline_listed,
    main_with_transaction,
    main_without_transaction,
    no_pattern
};

constexpr bool is_main(UrlVerdict verdict) {
    return verdict >= UrlVerdict::main_with_transaction;
}

constexpr uint32_t no_transaction = UINT32_MAX;

// By URL id (tools/parse/url_key.h); of no meaning for an id that no request that counts has.
struct UrlVerdicts {
    std::vector<UrlVerdict> verdicts;
    std::vector<uint32_t> transactions;              // numbers of transactions, or no_transaction
    std::vector<std::string_view> transaction_names; // by number
};

// Of the entries of url_pattern, which are classified and still in the order of `collapsed`.
UrlVerdicts find_verdicts(const RequestTable& table, const CollapsedRequests& collapsed);

// Of one entry; its row must be asked only when it is not left out.
UrlVerdict verdict_of(size_t entry);
