#pragma once

#include "base/failure.h"

#include <string_view>

// What becomes of each line of the settings, the scenario and the pattern files, told to a program
// that explains these files. The tool sets no observer, and a line costs it a few null tests.
//
// Each line has one outcome, which comes last of what is told of it and once the line has had its
// effect: the tables then hold it. Of several lines taken with one name, or values set with one
// name, the last counts, but for those with value_kept; logs and patterns add up.

enum class ObservedKind {
    // Outcomes of lines that were read. The text is the line unless said otherwise.
    empty_line,
    comment,
    column_header,   // line 1 of a pattern file
    unknown_keyword, // begins with no keyword of this file; ignored
    unknown_type,    // pattern of no known type, which is the text; ignored
    inactive,        // pattern whose status, the text, is not "active"; ignored
    taken,           // for its keyword or pattern type, the name; the text is its value, its log's
                     // path, or its pattern

    // Outcomes of lines for which the reader fails. The text is the value in question.
    value_too_long,
    value_malformed,      // a time of day or a date
    too_few_columns,      // the text is the first one
    too_many_logs,        // the text is the path of the one too many
    pattern_not_compiled, // or too long to be compiled
    post_data_missing,    // the text is the path that was looked for

    // Of a line whose outcome follows: the text is the value in question.
    line_cut,            // the line is longer than the reader's buffer, and what follows here is
                         // read, and counted, as the next one
    separator_skipped,   // the character after a keyword, with which the text begins, is skipped
                         // though it is no blank or tab
    value_missing,       // read as empty, 0, or what stands for any other value
    value_unknown,       // none of the words that are looked for
    value_kept,          // the line does not change the value that its name stands for
    value_set,           // a part of what a keyword sets: the position of a field, an end of the
                         // period
    field_unset,         // the field has position 0 since a longer keyword begins with its name
    not_a_number,        // read as 0
    number_out_of_range, // cut, wrapped, or refused later
    number_not_decimal,  // octal after a leading 0, or hexadecimal
    date_out_of_range,   // brought into range, as 31 April is 1 May, or before 1970
    text_not_read,       // is left over after the value
    spacing_kept,        // a tab or carriage return belongs to the value
    text_cut,            // the text is longer than what is kept of it
    empty_column,        // is skipped, so that the columns after it count for others

    // Of a file, with line number 0.
    file_not_opened, // the reader fails
};

// Where a reader is.
struct LinePlace {
    const char* file;           // path as the reader was given it
    int line_num;               // from 1, every piece of a line that is cut counting as one
    std::string_view name = {}; // keyword or pattern type, as far as it is known
};

struct ObservedLine {
    LinePlace place;
    std::string_view text; // valid during the call, as are the place's texts
    ObservedKind kind;
};

// Set by a program before it calls a reader; called by the thread that reads. Null: nobody is told.
inline void (*line_observer)(const ObservedLine&) = nullptr;

// Asked with the failure for which a reader would end at a line, which then has no effect: true
// lets the reader go on with the next line. For a program that wants to know of all such lines; set
// as the observer is. Null: the reader fails.
inline bool (*line_failure_observer)(const LinePlace&, const Failure&) = nullptr;

// Reads a line by `read`, whose failure ends the reader unless the observer above says otherwise.
template <typename Read> void read_observed_line(const LinePlace& place, const Read& read) {
    try {
        read();
    } catch (const Failure& failure) {
        if (line_failure_observer == nullptr || !line_failure_observer(place, failure)) {
            throw;
        }
    }
}

// `text` is anything that a view can be made of; nobody measures its length for no observer.
template <typename Text>
void observe_line(const LinePlace& place, ObservedKind kind, const Text& text) {
    if (line_observer != nullptr) {
        line_observer({place, text, kind});
    }
}
