#pragma once

#include "tests/unit_helpers.h"
#include "tools/parse/request_numbers.h"

#include <cstring>
#include <utility>
#include <vector>

// Numbers a table as worker threads do: in parts that are joined afterwards, some requests getting
// their session cookie only after later ones were numbered.
inline RequestNumbers number_requests(std::vector<alInfo>& records, Choices& choices) {
    RequestNumbers all;
    for (size_t start = 0; start < records.size();) {
        const size_t size = 1 + choices.below(records.size() - start);
        alInfo* const part = &records[start];
        RequestNumbers numbers;
        std::vector<std::pair<size_t, std::string>> waiting; // place in the part and cookie
        const auto give_session = [&] {
            const auto& [place, cookie] = waiting.back();
            std::strcpy(part[place].jsession_id, cookie.c_str());
            numbers.change_session(static_cast<uint32_t>(place), part[place]);
            waiting.pop_back();
        };
        for (size_t i = 0; i < size; ++i) {
            if (part[i].jsession_id[0] != '\0' && choices.one_in(5)) {
                waiting.emplace_back(i, part[i].jsession_id);
                part[i].jsession_id[0] = '\0';
            }
            numbers.add(part[i]);
            if (!waiting.empty() && choices.one_in(9)) {
                give_session();
            }
        }
        while (!waiting.empty()) {
            give_session();
        }
        numbers.finish();
        all.append(std::move(numbers));
        start += size;
    }
    return all;
}
