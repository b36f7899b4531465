#pragma once

// What a file is by its first bytes.
enum class FileKind {
    plain, // text, as far as is seen
    empty,
    packed, // compressed or an archive
    utf16,
    binary
};

// Of an open regular file, wherever it stands.
FileKind kind_of_file(int descriptor);
