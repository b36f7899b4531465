#include "companions/doctor/init/format_pieces.h"

#include "companions/doctor/init/apache_directive.h"
#include "companions/doctor/init/nginx_variable.h"

#include <string_view>

namespace {

void add_text(std::vector<FormatPiece>& pieces, char c) {
    if (pieces.empty() || pieces.back().content != LogContent::text) {
        pieces.push_back({LogContent::text, ""});
    }
    pieces.back().source += c;
}

} // namespace

std::vector<FormatPiece> split_format(const FormatText& format) {
    const bool is_nginx = format.server == LogServer::nginx;
    const char sign = is_nginx ? '$' : '%';
    std::vector<FormatPiece> pieces;
    std::string_view rest = format.text;
    while (!rest.empty()) {
        FormatPiece piece;
        const size_t length = rest.front() != sign ? 0
                              : is_nginx           ? read_nginx_variable(rest, piece)
                                                   : read_apache_directive(rest, piece);
        if (length == 0) {
            add_text(pieces, rest.front());
            rest.remove_prefix(1);
        } else {
            piece.source = rest.substr(0, length);
            pieces.push_back(piece);
            rest.remove_prefix(length);
        }
    }
    return pieces;
}
