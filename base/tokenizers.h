#pragma once

// Splitting of texts at delimiter characters, in place: runs of delimiters count as one, there are
// no empty fields, and each field is terminated by overwriting the delimiter after it.
//
// `fields` receives pointers into `read_buf`, at most `max_flds` of them; `*totalFlds` their
// number.

// Text after the last stored field is cut off from it, and at its own first delimiter.
void get_tokens1(char* read_buf, char* fields[], const char* token, int max_flds, int* totalFlds);

// Stops when `max_flds` fields are stored: the text that begins one character past the last field's
// end is left as it was, for the caller to take as the remainder.
void get_tokens12(char* read_buf, char* fields[], const char* token, int max_flds, int* totalFlds);
