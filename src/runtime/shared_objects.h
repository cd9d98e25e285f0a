// Objects that the library makes at its start and shares through the singleton registry, but whose classes
// live on higher floors. Declared here and defined by the room that has the class, so that library start
// needs no class.
#pragma once

namespace qv {

// A new file manager with one reference, or null when memory runs out. Defined by the io room.
[[nodiscard]] void* CreateSharedFileManager() noexcept;

}  // namespace qv
