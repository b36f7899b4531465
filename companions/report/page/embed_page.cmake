# Puts the page together and writes it as C++: cmake -DSCRIPTS=LIST -DCHART_JS=FILE
# -DCHART_JS_COPYRIGHT=FILE -DSOURCE_DIR=DIR -DOUTPUT=FILE -P embed_page.cmake
cmake_minimum_required(VERSION 3.25)

# The hash of a text as a Content-Security-Policy has it, so that nothing but that text is run. The
# 256 bits are four short of groups of 24: 64 hexadecimal digits are filled up with two zeros, and the
# last of the 44 characters becomes the filling sign.
function(hash_for_policy text result)
    set(alphabet "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/")
    string(SHA256 digits "${text}")
    string(APPEND digits "00")
    set(encoded "")
    foreach(at RANGE 0 63 3)
        string(SUBSTRING ${digits} ${at} 3 group)
        math(EXPR first "0x${group} >> 6")
        math(EXPR second "0x${group} & 63")
        string(SUBSTRING ${alphabet} ${first} 1 first)
        string(SUBSTRING ${alphabet} ${second} 1 second)
        string(APPEND encoded ${first}${second})
    endforeach()
    string(SUBSTRING ${encoded} 0 43 encoded)
    set(${result} "'sha256-${encoded}='" PARENT_SCOPE)
endfunction()

function(refuse_end_of_script name text)
    string(TOLOWER "${text}" text)
    if("${text}" MATCHES "</script|<!--")
        message(FATAL_ERROR "${name} cannot stand in a page: it holds \"${CMAKE_MATCH_0}\"")
    endif()
endfunction()

file(READ ${SOURCE_DIR}/page.html page)
file(READ ${SOURCE_DIR}/page.css style)
file(READ ${SOURCE_DIR}/theme.js theme_script)
file(READ ${CHART_JS} chart_script)
file(READ ${CHART_JS_COPYRIGHT} chart_licence)
string(REGEX REPLACE "\n//# sourceMappingURL=[^\n]*" "" chart_script "${chart_script}")

set(page_script "\"use strict\";\n(() => {\n")
foreach(script ${SCRIPTS})
    file(READ ${SOURCE_DIR}/${script} text)
    string(APPEND page_script "${text}\n")
endforeach()
string(APPEND page_script "})();\n")

foreach(script theme_script chart_script page_script)
    refuse_end_of_script(${script} "${${script}}")
    hash_for_policy("${${script}}" hash)
    list(APPEND script_hashes ${hash})
endforeach()
list(JOIN script_hashes " " script_hashes)
hash_for_policy("${style}" style_hash)
string(REPLACE "&" "&amp;" chart_licence "${chart_licence}")
string(REPLACE "<" "&lt;" chart_licence "${chart_licence}")

string(REPLACE "@SCRIPT_HASHES@" "${script_hashes}" page "${page}")
string(REPLACE "@STYLE_HASHES@" "${style_hash}" page "${page}")
string(REPLACE "@STYLE@" "${style}" page "${page}")
string(REPLACE "@THEME_SCRIPT@" "${theme_script}" page "${page}")
string(REPLACE "@CHART_LICENCE@" "${chart_licence}" page "${page}")
string(FIND "${page}" "@FIGURES@" begin)
math(EXPR end "${begin} + 9") # behind the mark
string(SUBSTRING "${page}" 0 ${begin} before)
string(SUBSTRING "${page}" ${end} -1 after)
string(REPLACE "@CHART_SCRIPT@" "${chart_script}" after "${after}")
string(REPLACE "@PAGE_SCRIPT@" "${page_script}" after "${after}")

# As numbers: texts of this size are more than a string literal may hold everywhere.
function(append_array name text)
    string(HEX "${text}" bytes)
    string(REGEX REPLACE "(................................)" "\\1\n" bytes "${bytes}")
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
    file(APPEND ${OUTPUT}.new "const unsigned char ${name}[] = {\n${bytes}};\n")
endfunction()

file(WRITE ${OUTPUT}.new "#include \"companions/report/page/page_text.h\"\n\nnamespace {\n\n")
append_array(before_figures "${before}")
append_array(after_figures "${after}")
file(APPEND ${OUTPUT}.new "
template <size_t size> std::string_view text_of(const unsigned char (&bytes)[size]) {
    return {reinterpret_cast<const char*>(bytes), size};
}

} // namespace

std::string_view page_before_figures() {
    return text_of(before_figures);
}

std::string_view page_after_figures() {
    return text_of(after_figures);
}
")
file(RENAME ${OUTPUT}.new ${OUTPUT})
