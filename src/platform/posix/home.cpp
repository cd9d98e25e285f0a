#include "platform/home.h"

#include <cerrno>
#include <cstdlib>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace qv {
namespace {

std::string HomeFromPasswordDatabase() {
    constexpr size_t kMostRoom = size_t{1}
                                 << 20;  // no entry is that long; an answer that still does not fit is none
    std::vector<char> room(1024);
    passwd entry;
    passwd* found = nullptr;
    while (getpwuid_r(getuid(), &entry, room.data(), room.size(), &found) == ERANGE &&
           room.size() < kMostRoom) {
        room.resize(2 * room.size());
    }
    return found && found->pw_dir ? found->pw_dir : "";
}

}  // namespace

std::string HomeDirectory() {
    const char* home = std::getenv("HOME");
    return home && home[0] == '/' ? home : HomeFromPasswordDatabase();
}

}  // namespace qv
