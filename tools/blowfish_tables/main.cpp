// Writes the Blowfish starting tables to standard output:
//     build/<preset>/tools/blowfish_tables/blowfish_tables > src/crypto/blowfish_tables.cpp

#include <cstdio>

#include "pi_digits.h"

int main() {
    const std::string text = blowfish_tables::TablesSource();
    return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() ? 0 : 1;
}
