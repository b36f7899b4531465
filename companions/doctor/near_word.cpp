#include "companions/doctor/near_word.h"

#include <algorithm>

namespace {

constexpr size_t longest_compared = 100; // longer words are no slips of the keyboard

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

} // namespace

size_t edit_distance(std::string_view a, std::string_view b) {
    // Three rows of the table of distances between the beginnings of both words.
    std::vector<size_t> before_last(b.size() + 1);
    std::vector<size_t> last(b.size() + 1);
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) {
        row[j] = j;
    }
    for (size_t i = 1; i <= a.size(); ++i) {
        before_last.swap(last);
        last.swap(row);
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const bool is_same = lower(a[i - 1]) == lower(b[j - 1]);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (is_same ? 0 : 1)});
            if (i > 1 && j > 1 && lower(a[i - 1]) == lower(b[j - 2]) &&
                lower(a[i - 2]) == lower(b[j - 1])) {
                row[j] = std::min(row[j], before_last[j - 2] + 1);
            }
        }
    }
    return row[b.size()];
}

std::string nearest_word(std::string_view word, const std::vector<std::string>& words) {
    std::string nearest;
    size_t least = std::min(word.size() / 3, size_t{6}) + 1;
    for (const std::string& candidate : words) {
        if (word.size() > longest_compared || candidate.size() > longest_compared) {
            continue;
        }
        const size_t distance = edit_distance(word, candidate);
        if (distance < least) {
            least = distance;
            nearest = candidate;
        }
    }
    return nearest;
}
