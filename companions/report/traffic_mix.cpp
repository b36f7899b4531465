#include "companions/report/traffic_mix.h"

#include "companions/common/text_map.h"

#include <algorithm>
#include <utility>

namespace {

bool is_replayed_main(const ListedUrl& url) {
    return !url.is_filtered && url.kind != UrlKind::inline_object;
}

void add_url(TrafficShare& part, const ListedUrl& url) {
    part.requests += url.requests;
    ++part.urls;
}

void add_example(std::vector<UrlExample>& examples, const ListedUrl& url) {
    constexpr size_t most_examples = 3;
    const auto place = std::find_if(examples.begin(), examples.end(), [&](const UrlExample& other) {
        return other.requests < url.requests;
    });
    if (place == examples.end() && examples.size() == most_examples) {
        return;
    }
    examples.insert(place, {std::string(url.method), std::string(url.host), std::string(url.url),
                            url.requests});
    examples.resize(std::min(examples.size(), most_examples));
}

bool has_more_requests(const TrafficShare& a, const TrafficShare& b) {
    return a.requests != b.requests ? a.requests > b.requests : a.name < b.name;
}

template <typename Part> uint64_t sum_of_requests(const std::vector<Part>& parts) {
    uint64_t sum = 0;
    for (const Part& part : parts) {
        sum += part.requests;
    }
    return sum;
}

double share_of(uint64_t part, uint64_t whole) {
    return whole == 0 ? 0 : static_cast<double>(part) / static_cast<double>(whole);
}

// Sets the shares of the whole that the parts make up, and sorts them.
template <typename Part> void set_shares(std::vector<Part>& parts) {
    const uint64_t whole = sum_of_requests(parts);
    for (Part& part : parts) {
        part.share = share_of(part.requests, whole);
    }
    std::sort(parts.begin(), parts.end(), has_more_requests);
}

// Parts by their names, in the order in which they come.
class NamedShares {
  public:
    void add(std::string_view name, const ListedUrl& url) {
        const auto [place, is_new] = numbers_.try_emplace(name, shares_.size());
        if (is_new) {
            shares_.push_back({.name = std::string(name)});
        }
        add_url(shares_[place->second], url);
    }

    std::vector<TrafficShare> take() {
        set_shares(shares_);
        return std::move(shares_);
    }

  private:
    TextMap<size_t> numbers_;
    std::vector<TrafficShare> shares_;
};

std::vector<TrafficShare> count_hosts(const std::vector<ListedUrl>& urls) {
    NamedShares hosts;
    for (const ListedUrl& url : urls) {
        hosts.add(url.host, url);
    }
    return hosts.take();
}

std::string in_capital_letters(std::string_view text) {
    std::string capitals(text);
    for (char& c : capitals) {
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    }
    return capitals;
}

// However they are spelt.
std::vector<TrafficShare> count_methods(const std::vector<ListedUrl>& urls) {
    TextMap<std::string> in_capitals;
    NamedShares methods;
    for (const ListedUrl& url : urls) {
        std::string& name = in_capitals[url.method];
        if (name.empty()) {
            name = in_capital_letters(url.method);
        }
        methods.add(name, url);
    }
    return methods.take();
}

bool lacks_body(const ListedUrl& url) {
    return url.sends_body && is_replayed_main(url) && url.body_file.empty();
}

void add_to(TransactionFigures& transaction, const ListedUrl& url) {
    add_url(transaction, url);
    add_example(transaction.examples, url);
}

// All transactions, in the order of their names as given.
std::vector<TransactionFigures> name_transactions(const std::vector<std::string_view>& names,
                                                  const std::vector<PeakStep>& peaks) {
    std::vector<TransactionFigures> transactions(names.size());
    for (size_t i = 0; i < names.size(); ++i) {
        transactions[i].name = names[i];
        transactions[i].peak_minute = peaks[i];
    }
    return transactions;
}

} // namespace

TrafficMix mix_of(const std::vector<ListedUrl>& urls, const std::vector<std::string_view>& names,
                  const std::vector<PeakStep>& peaks) {
    TrafficMix mix;
    mix.transactions = name_transactions(names, peaks);
    mix.without_transaction.peak_minute = peaks.back();
    TextMap<size_t> numbers;
    for (size_t i = 0; i < names.size(); ++i) {
        numbers.emplace(names[i], i);
    }
    for (size_t row = 0; row < urls.size(); ++row) {
        const ListedUrl& url = urls[row];
        if (is_replayed_main(url)) {
            const auto found = numbers.find(url.transaction);
            add_to(found == numbers.end() ? mix.without_transaction
                                          : mix.transactions[found->second],
                   url);
        }
        if (lacks_body(url)) {
            mix.post_without_body.push_back(row);
            mix.post_without_body_requests += url.requests;
        }
    }
    const uint64_t with_transaction = sum_of_requests(mix.transactions);
    const uint64_t without = mix.without_transaction.requests;
    mix.without_transaction.share = share_of(without, with_transaction + without);
    set_shares(mix.transactions);
    mix.hosts = count_hosts(urls);
    mix.methods = count_methods(urls);
    return mix;
}
