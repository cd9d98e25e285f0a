// Turns a tree of XML nodes into its text.
#pragma once

#include "base/html_entities.h"
#include "runtime/Owned.h"

namespace qv {

// The text as Data, or nothing when the tree has none (see QVXMLTreeCreateData). Throws std::bad_alloc.
[[nodiscard]] Owned CreateXMLData(void* root, HtmlCharSet charSet);

}  // namespace qv
