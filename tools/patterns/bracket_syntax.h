#pragma once

#include "tools/patterns/pattern_syntax.h"

#include <optional>
#include <string_view>

// Sets of bytes as patterns write them.

// Reads a bracket expression whose opening bracket has been read, and takes it off the start of
// `rest`. None when it is not one that is understood; `rest` is then of no use.
std::optional<ByteSet> take_bracket(std::string_view& rest);

// The bytes of a class, as "alpha". None when there is no class of this name.
std::optional<ByteSet> bytes_of_class(std::string_view name);

// The bytes of words: letters, digits and the underscore.
ByteSet word_bytes();
