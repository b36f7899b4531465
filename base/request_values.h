#pragma once

// What the values of a request look like wherever they are kept.

// Stands for a value that is not available: any method, any host, no transaction, no file. Shared
// by pointer, never written to.
extern const char na_string[];

constexpr int max_method_length = 16; // characters kept of a method
