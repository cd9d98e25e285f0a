#include "platform/home.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include "support/environment.h"

namespace {

using qvtest::ScopedVariable;

std::string PasswordDatabaseHome() {
    const passwd* entry = getpwuid(getuid());
    return entry ? entry->pw_dir : "";
}

TEST(Home, IsTheEnvironmentsWhenThatIsAbsolute) {
    const ScopedVariable home("HOME", "/some/where");
    EXPECT_EQ(qv::HomeDirectory(), "/some/where");
}

TEST(Home, ElseThePasswordDatabases) {
    for (const char* value : {"", "relative/path", static_cast<const char*>(nullptr)}) {
        const ScopedVariable home("HOME", value);
        EXPECT_EQ(qv::HomeDirectory(), PasswordDatabaseHome());
    }
}

}  // namespace
