#pragma once

#include "companions/doctor/init/log_layout.h"
#include "companions/doctor/init/log_sample.h"

#include <string>
#include <vector>

// How well a cookie ties the requests of one user together.
struct CookieUse {
    std::string name;
    size_t requests = 0;  // that carry it or whose response sets it
    size_t values = 0;    // different ones
    size_t clients = 0;   // different client addresses, as far as the log has them
    size_t set_count = 0; // responses that set it
    size_t misread = 0;   // requests in which the tool finds another value, since it looks for the
                          // name anywhere in the header
    size_t without_first = 0;  // requests that carry it and not the best of the cookies
    size_t with_first_set = 0; // requests that carry it and whose response sets the best one
    double score = 0;

    double values_for_client() const {
        return clients == 0 ? 0.0 : static_cast<double>(values) / static_cast<double>(clients);
    }
};

// What the lines tell of sessions.
struct SessionEvidence {
    size_t requests = 0;                 // accepted by the parser
    size_t bad_addresses = 0;            // client addresses that the tool cannot read
    size_t missing_addresses = 0;        // "-"
    std::vector<CookieUse> cookies = {}; // best first
};

enum class SessionKey {
    cookie,
    client_address,
    none // every request counts for itself
};

struct SessionChoice {
    SessionKey key = SessionKey::client_address;
    std::string cookie = "";
    std::string secondary = ""; // empty: none
};

// Looks at the cookies and client addresses of the lines, as the tool's parser reads them.
SessionEvidence look_for_sessions(const LogLayout& layout, const std::vector<LogSample>& samples);

// The session cookie that ties requests together best; without cookies, the client address where
// the tool can read it.
SessionChoice choose_session(const LogLayout& layout, const SessionEvidence& evidence);
