// The member index: how qvtool keeps the names of an archive's files.
//
// The archive format reserves an attribute block for names but stores no bytes there in this version. So
// qvtool adds one more file item, the last one, entered in no directory: a text that tells each member's ID,
// state, mode, size and name. docs/archive-format.md describes it. Archives without it are valid; their
// members then have no names.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "archive_reader.h"

namespace tool {

struct Member {
    std::uint32_t id = 0;
    bool compressed = false;  ///< the body is in the compressed block format, not the file's own bytes
    unsigned mode = 0;        ///< permission bits
    std::uint64_t size = 0;   ///< of the file before any compression
    std::string name;
};

/// The index item's text.
[[nodiscard]] std::string EncodeMemberIndex(const std::vector<Member>& members);

/// The members that an index text names; nothing when the text is no well-formed index.
[[nodiscard]] std::optional<std::vector<Member>> DecodeMemberIndex(const std::string& text);

/// The archive's index: the members in the order of the text, and the item that holds it. Nothing when the
/// archive has none, or has one that does not fit its items.
struct FoundIndex {
    std::vector<Member> members;
    std::uint32_t itemID = 0;
};
[[nodiscard]] std::optional<FoundIndex> FindMemberIndex(const ArchiveReader& archive);

}  // namespace tool
