#pragma once

#include "companions/common/shown_text.h"

#include <string>
#include <string_view>

// A text as it stands in an XML element or attribute. What XML cannot hold becomes visible, as in
// shown_text.
inline std::string xml_text(std::string_view text) {
    std::string escaped;
    for (const char c : shown_text(text)) {
        switch (c) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        case '\'':
            escaped += "&apos;";
            break;
        default:
            escaped += c;
        }
    }
    return escaped;
}
