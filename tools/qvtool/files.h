// Files that commands read, through the library.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "tool.h"

namespace tool {

// A File object for the path, closed.
[[nodiscard]] Object FileAt(const std::string& path);

// The same, open for reading. Throws a Failure that names the file and tells why it cannot be read: the
// library reads regular files only.
[[nodiscard]] Object OpenForReading(const std::string& path);

// Hands on the open file's bytes from its marker to its end, in pieces of `pieceSize` bytes. The last piece
// may be shorter; none is empty. Throws a Failure that names the path.
using PieceReader = std::function<void(unsigned char* bytes, std::size_t size)>;
void ReadPieces(const Object& file, const std::string& path, std::size_t pieceSize,
                const PieceReader& reader);

// The file's bytes. Throws as OpenForReading does.
[[nodiscard]] Object ReadData(const std::string& path);

// The file's text, which must be UTF-8; an empty file is an empty string.
[[nodiscard]] Object ReadText(const std::string& path);

}  // namespace tool
