// The user's trash, in the layout of the desktop's trash folders: files/ holds the items and info/ one small
// text each, which tells where the item came from and when it was deleted.
#pragma once

#include <string>
#include <string_view>

#include "platform/file_system.h"

namespace qv {

// Moves the item into the trash as "name.1", or with the first greater number that is free there, and lets
// path follow it. Tries the trash of the user's data directory, then the one at the root of the item's own
// file system. Nothing is replaced; a failure leaves the item where it is: kPermission when permission was
// the reason, else kOther.
FileError MoveToTrash(std::string& path, std::string_view name);

// The text that goes into info/: percent signs, and bytes that are not plain letters, digits or path
// punctuation, stand as %XX in the path.
[[nodiscard]] std::string TrashInfoText(std::string_view path, std::string_view date);

}  // namespace qv
