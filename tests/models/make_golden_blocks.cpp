// Writes the golden compressed files with the plain model: make_golden_blocks DIRECTORY
#include <cstdio>
#include <fstream>

#include "golden/golden_blocks.h"
#include "models/plain_block_encoder.h"

int main(int count, char** arguments) {
    if (count != 2) {
        std::fprintf(stderr, "usage: make_golden_blocks DIRECTORY\n");
        return 2;
    }
    for (const qvtest::GoldenBlocks& golden : qvtest::kGoldenBlocks) {
        const std::vector<std::uint8_t> blocks = model::Compress(golden.Input());
        std::ofstream file(std::string(arguments[1]) + "/" + golden.FileName(), std::ios::binary);
        file.write(reinterpret_cast<const char*>(blocks.data()), static_cast<std::streamsize>(blocks.size()));
        if (!file.flush()) return 1;
    }
    return 0;
}
