// Replays the checked-in corpora, and small changes of them, through every fuzz target.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "fuzz_support.h"
#include "targets.h"

namespace {

struct Target {
    const char* name;
    void (*run)(const std::uint8_t* bytes, std::size_t size);
};

constexpr Target kTargets[] = {
    {"archive_items", qvfuzz::ArchiveItems},     {"base64", qvfuzz::Base64},
    {"binary_reader", qvfuzz::BinaryReader},     {"container_decode", qvfuzz::ContainerDecode},
    {"css_parser", qvfuzz::CssParser},           {"scanner", qvfuzz::Scanner},
    {"string_decoding", qvfuzz::StringDecoding},
};

std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class Corpus : public testing::TestWithParam<Target> {
protected:
    // The inputs in the order of their names, so that a failure can be repeated.
    static std::vector<std::string> Inputs() {
        std::vector<std::filesystem::path> paths;
        for (const auto& entry :
             std::filesystem::directory_iterator(std::string(FUZZ_CORPUS "/") + GetParam().name)) {
            paths.push_back(entry.path());
        }
        std::sort(paths.begin(), paths.end());
        std::vector<std::string> inputs;
        for (const std::filesystem::path& path : paths)
            inputs.push_back(ReadFile(path));
        return inputs;
    }

    static void Run(const std::string& input) {
        GetParam().run(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
    }
};

TEST_P(Corpus, EveryInputIsSurvived) {
    qvfuzz::StartLibrary();
    const std::vector<std::string> inputs = Inputs();
    EXPECT_GE(inputs.size(), 3U);
    for (const std::string& input : inputs)
        Run(input);
    Run("");
}

TEST_P(Corpus, EverySmallChangeIsSurvived) {
    qvfuzz::StartLibrary();
    std::mt19937 random(7);
    for (const std::string& input : Inputs()) {
        for (int change = 0; change < 60 && !input.empty(); ++change) {
            std::string changed = input.substr(0, 1 + random() % input.size());
            changed[random() % changed.size()] = static_cast<char>(random());
            Run(changed);
        }
    }
}

// What is behind a container's fingerprint is reached from a true one only.
TEST(ContainerCorpus, HoldsATrueContainer) {
    qvfuzz::StartLibrary();
    const qvfuzz::Scope scope;
    const std::string bytes = ReadFile(FUZZ_CORPUS "/container_decode/whole");
    void* container = QVTEMPOBJ(QVDataCreate(bytes.data(), bytes.size()));
    void* key = QVTEMPOBJ(QVDataCreate(qvfuzz::kContainerKey, qvfuzz::kContainerKeySize));
    void* plain = QVCryptoDecodeData(container, key);
    ASSERT_NE(plain, nullptr);
    const std::string text(static_cast<const char*>(QVDataGetImutableBuffer(plain)), QVDataGetSize(plain));
    EXPECT_EQ(text, "a plaintext whose last block is cut short");
}

INSTANTIATE_TEST_SUITE_P(Fuzz, Corpus, testing::ValuesIn(kTargets),
                         [](const auto& target) { return std::string(target.param.name); });

}  // namespace
