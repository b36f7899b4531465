#pragma once

#include <string>
#include <string_view>

// Appends a form to a text; for each letter behind a '%', add(letter) appends what stands for it.
template <typename Add> void append_form(std::string& text, std::string_view form, Add add) {
    for (size_t at = 0; at < form.size(); ++at) {
        if (form[at] == '%') {
            add(form[++at]);
        } else {
            text += form[at];
        }
    }
}
