// What the fuzz targets share: the library brought up once, and a check that works in every build.
#pragma once

#include <cstdio>
#include <cstdlib>

#include <QVFoundation/QVFoundation.h>

namespace qvfuzz {

// Brings the library up for the rest of the process.
inline void StartLibrary() {
    static const int started = QVFoundationInit();
    (void)started;
}

// The key of the containers in the corpus: fixed, so that mutations of a true container get as far as the
// fingerprint.
inline constexpr char kContainerKey[] = "fuzzing key";
inline constexpr unsigned long kContainerKeySize = sizeof kContainerKey - 1;

inline void Check(bool condition, const char* what) {
    if (condition) return;
    std::fprintf(stderr, "fuzz: %s\n", what);
    std::abort();
}

// A pool and a few objects for one input, given back at its end.
class Scope {
public:
    Scope() : pool_(QVTemporaryObjectsPoolCreate()) {}
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;
    ~Scope() { QVRelease(pool_); }

    // Adopts a reference until the scope ends.
    void* Keep(void* created) { return created == nullptr ? nullptr : QVTEMPOBJ(created); }

private:
    void* pool_;
};

}  // namespace qvfuzz
