#include "companions/doctor/init/session_cookies.h"

#include "companions/doctor/init/cookie_header.h"
#include "companions/doctor/init/line_trial.h"
#include "tools/parse/client_address.h"
#include "tools/parse/cookie_values.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <map>
#include <set>
#include <string_view>

namespace {

constexpr size_t max_names = 1000;        // a hostile log has no end of names
constexpr double least_share = 0.1;       // of requests, for a cookie to be proposed
constexpr double unreadable_share = 0.05; // of client addresses, beyond which they do not do

struct Tally {
    CookieUse use;
    std::set<std::string> values;
    std::set<std::string> clients;
};

using Tallies = std::map<std::string, Tally, std::less<>>;

// The tool's own value of a cookie in a header, cut as it cuts it.
std::string value_for_tool(const std::string& header, std::string_view name) {
    const LineText text = {const_cast<char*>(header.data()), header.size()}; // is read only
    const char* const found = CookieNames(name, name).find_plainly(text).session;
    if (found == nullptr) {
        return "";
    }
    const auto rest = static_cast<size_t>(header.data() + header.size() - found);
    const size_t skipped = std::min(name.size() + 1, rest); // the name and what follows it
    CookieValue value;
    return {value, store_cookie_value(found + skipped, rest - skipped, value)};
}

std::string lower(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(), [](char c) {
        return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    });
    return result;
}

template <size_t count>
bool holds_any(const std::string& text, const std::array<const char*, count>& words) {
    return std::ranges::any_of(
        words, [&](const char* word) { return text.find(word) != std::string::npos; });
}

// Names that frameworks give to sessions, and those of visitor counting, which outlives sessions.
double weight_of_name(std::string_view name) {
    const std::string text = lower(name);
    if (holds_any(text, std::array{"sess", "connect.sid", "aspsessionid", "cfid", "cftoken"}) ||
        text == "sid") {
        return 2.0;
    }
    const bool counts_visitors =
        text.starts_with("_") || holds_any(text, std::array{"consent", "visitor", "_ga", "lang"});
    return counts_visitors ? 0.25 : 1.0;
}

double share_of(size_t part, size_t whole) {
    return whole == 0 ? 0.0 : static_cast<double>(part) / static_cast<double>(whole);
}

// A session cookie is carried by most requests, by several with one value, and differs from client
// to client; and it is a response that sets it.
double score_of(const CookieUse& use, size_t all_requests) {
    const double carried = share_of(use.requests, all_requests);
    const double ties = share_of(use.requests - use.values, use.requests);
    const double differs =
        use.clients == 0 ? (use.values > 1 ? 1.0 : 0.1) : std::min(1.0, use.values_for_client());
    const double constant = use.values == 1 && use.requests > 5 ? 0.05 : 1.0;
    const double set = use.set_count > 0 ? 1.5 : 1.0;
    const double read = 1.0 - share_of(use.misread, use.requests);
    return carried * (0.1 + ties) * differs * constant * set * read * weight_of_name(use.name);
}

// The texts of one request that matter here.
struct CookieTexts {
    std::string cookies;
    std::string set_cookies;
    std::string client; // empty: not known
};

class CookieCount {
  public:
    void add(const CookieTexts& request);
    std::vector<CookieUse> ranking(size_t requests);

  private:
    Tally* tally_of(std::string_view name);
    void add_cookie(const CookieTexts& request, const std::string& header, const Cookie& cookie);

    Tallies tallies_;
};

Tally* CookieCount::tally_of(std::string_view name) {
    const auto found = tallies_.find(name);
    if (found != tallies_.end()) {
        return &found->second;
    }
    return tallies_.size() < max_names ? &tallies_[std::string(name)] : nullptr;
}

void CookieCount::add_cookie(const CookieTexts& request, const std::string& header,
                             const Cookie& cookie) {
    Tally* const tally = tally_of(cookie.name);
    if (tally == nullptr) {
        return;
    }
    ++tally->use.requests;
    tally->values.emplace(cookie.value);
    if (!request.client.empty()) {
        tally->clients.insert(request.client);
    }
    const std::string_view kept = cookie.value.substr(0, max_cookie_length - 1);
    tally->use.misread += value_for_tool(header, cookie.name) == kept ? 0 : 1;
}

void CookieCount::add(const CookieTexts& request) {
    const std::vector<Cookie> carried = cookies_of(request.cookies);
    for (const Cookie& cookie : carried) {
        add_cookie(request, request.cookies, cookie);
    }
    for (const Cookie& cookie : set_cookies_of(request.set_cookies)) {
        Tally* const tally = tally_of(cookie.name);
        if (tally == nullptr) {
            continue;
        }
        ++tally->use.set_count;
        if (!names_cookie(carried, cookie.name)) {
            add_cookie(request, request.set_cookies, cookie);
        }
    }
}

std::vector<CookieUse> CookieCount::ranking(size_t requests) {
    std::vector<CookieUse> uses;
    for (auto& [name, tally] : tallies_) {
        CookieUse use = tally.use;
        use.name = name;
        use.values = tally.values.size();
        use.clients = tally.clients.size();
        use.score = score_of(use, requests);
        uses.push_back(use);
    }
    std::ranges::stable_sort(uses, std::ranges::greater(), &CookieUse::score);
    return uses;
}

// How the other cookies stand to the best one: only a cookie that some requests carry without it
// can find these their session.
void count_beside_first(const std::vector<CookieTexts>& requests, std::vector<CookieUse>& uses) {
    if (uses.empty()) {
        return;
    }
    const std::string first = uses.front().name;
    std::map<std::string_view, CookieUse*> by_name;
    for (CookieUse& use : uses) {
        by_name[use.name] = &use;
    }
    for (const CookieTexts& request : requests) {
        const std::vector<Cookie> carried = cookies_of(request.cookies);
        const bool is_set = names_cookie(set_cookies_of(request.set_cookies), first);
        const bool is_missing = !names_cookie(carried, first);
        for (const Cookie& cookie : carried) {
            const auto use = by_name.find(cookie.name);
            if (use != by_name.end()) {
                use->second->without_first += is_missing && !is_set ? 1 : 0;
                use->second->with_first_set += is_set ? 1 : 0;
            }
        }
    }
}

std::string text_or_empty(const char* text) {
    return text == nullptr || std::string_view(text) == "-" ? "" : text;
}

std::string client_of(const LogLayout& layout, const std::string& line) {
    if (!layout.has(AL_CLIENT_IP)) {
        return "";
    }
    const std::vector<std::string> fields = split_into_fields(line);
    const size_t index = static_cast<size_t>(layout.positions[AL_CLIENT_IP]) - 1;
    return index < fields.size() ? fields[index] : "";
}

void count_address(const std::string& client, SessionEvidence& evidence) {
    uint32_t address;
    if (client == "-") {
        ++evidence.missing_addresses;
    } else if (!client.empty() && zv_ip_addr(client.c_str(), &address) == -1) {
        ++evidence.bad_addresses;
    }
}

// A cookie that requests carry before they have the session cookie.
std::string secondary_of(const std::vector<CookieUse>& cookies) {
    const CookieUse* best = nullptr;
    for (const CookieUse& use : cookies) {
        const bool tells_clients_apart =
            use.values > 1 && (use.clients == 0 || use.values_for_client() > 0.9);
        const bool helps = &use != &cookies.front() && tells_clients_apart &&
                           use.without_first > 0 && use.with_first_set > 0 && use.misread == 0;
        if (helps && (best == nullptr || use.values > best->values)) {
            best = &use;
        }
    }
    return best == nullptr ? "" : best->name;
}

} // namespace

SessionEvidence look_for_sessions(const LogLayout& layout, const std::vector<LogSample>& samples) {
    SessionEvidence evidence;
    CookieCount count;
    std::vector<CookieTexts> requests;
    LineTrial trial(layout);
    for (const LogSample& sample : samples) {
        for (const std::string& line : sample.lines) {
            if (trial.parse(line) != LineKind::accepted || !trial.is_plausible()) {
                continue;
            }
            ++evidence.requests;
            const std::string client = client_of(layout, line);
            count_address(client, evidence);
            if (!layout.has(AL_REQUEST_COOKIE)) {
                continue;
            }
            requests.push_back({text_or_empty(trial.request().cookies),
                                text_or_empty(trial.request().set_cookies), client});
            count.add(requests.back());
        }
    }
    evidence.cookies = count.ranking(evidence.requests);
    count_beside_first(requests, evidence.cookies);
    return evidence;
}

SessionChoice choose_session(const LogLayout& layout, const SessionEvidence& evidence) {
    if (!evidence.cookies.empty()) {
        const CookieUse& best = evidence.cookies.front();
        if (share_of(best.requests, evidence.requests) >= least_share && best.score > 0) {
            return {SessionKey::cookie, best.name, secondary_of(evidence.cookies)};
        }
    }
    const size_t unreadable = evidence.bad_addresses;
    if (!layout.has(AL_CLIENT_IP) || share_of(unreadable, evidence.requests) > unreadable_share) {
        return {SessionKey::none};
    }
    return {SessionKey::client_address};
}
