// qvbench OUT [FILTER]: measures every row whose name contains FILTER and writes one JSON object a line to
// OUT. The runner beside it (bench/run) makes the table. The rows' own output, such as log lines, goes to
// standard output, which the runner throws away.

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <QVFoundation/QVLibrary.h>

#include "bench.h"

namespace {

bool MeasureRow(const bench::Suite::Entry& row, std::FILE* out) {
    try {
        const bench::Comparison comparison = row.make();
        const bench::Figures figures = bench::Measure(comparison);
        std::fprintf(out,
                     "{\"work\": \"%s\", \"reference\": \"%s\", \"stand_in\": %s, \"ours_ns\": %.4g, "
                     "\"reference_ns\": %.4g, \"floor\": \"%s\", \"floor_ns\": %.4g, \"samples\": %d}\n",
                     row.work.c_str(), comparison.referenceName.c_str(),
                     comparison.standIn ? "true" : "false", figures.ours, figures.reference,
                     comparison.floor.name.c_str(), figures.floor, figures.samples);
    } catch (const std::exception& failure) {
        std::fprintf(out, "{\"work\": \"%s\", \"error\": \"%s\"}\n", row.work.c_str(), failure.what());
        return false;
    }
    std::fflush(out);
    return true;
}

// A process of its own for each row: the memory that one row has taken and given back in any order would slow
// down the next ones. Answers whether the row's result was right.
bool MeasureApart(const bench::Suite::Entry& row, std::FILE* out) {
    std::fflush(out);
    const pid_t child = fork();
    if (child == 0) {
        // Applications have threads, and the C++ library counts references without atomics until there is
        // one.
        std::thread([] {}).join();
        QVFoundationInit();
        const bool right = MeasureRow(row, out);
        QVFoundationExit();
        std::_Exit(std::fflush(out) == 0 && right ? 0 : 1);
    }
    int status = 1;
    return child > 0 && waitpid(child, &status, 0) == child && status == 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: qvbench OUT [FILTER]\n");
        return 2;
    }
    std::FILE* out = std::fopen(argv[1], "w");
    if (out == nullptr) {
        std::perror(argv[1]);
        return 2;
    }
    // Log lines are work that is measured; nobody reads them.
    if (std::freopen("/dev/null", "w", stdout) == nullptr) return 2;

    const std::string filter = argc > 2 ? argv[2] : "";

    bench::Suite suite;
    bench::AddRuntimeComparisons(suite);
    bench::AddTextComparisons(suite);
    bench::AddCollectionsComparisons(suite);
    bench::AddIoComparisons(suite);
    bench::AddCodecComparisons(suite);
    bench::AddCompressionComparisons(suite);
    bench::AddCryptoComparisons(suite);
    bench::AddArchiveComparisons(suite);
    bench::AddFormatsComparisons(suite);

    bool right = true;
    for (const auto& row : suite.Entries()) {
        if (row.work.find(filter) != std::string::npos) right = MeasureApart(row, out) && right;
    }
    return std::fclose(out) == 0 && right ? 0 : 1;
}
