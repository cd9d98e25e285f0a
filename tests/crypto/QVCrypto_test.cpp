#include <algorithm>
#include <climits>
#include <cstring>
#include <gtest/gtest.h>

#include <QVFoundation/QVCrypto.h>
#include <QVFoundation/QVFile.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>

#include "crypto/container_tools.h"
#include "crypto/pi_words.h"
#include "models/container_model.h"
#include "support/failing_allocator.h"
#include "support/failing_files.h"
#include "support/log_capture.h"
#include "support/strings.h"
#include "support/temporary_directory.h"

namespace {

using qv::Owned;
using qvtest::Bytes;
using qvtest::BytesOf;
using qvtest::Decode;
using qvtest::Encode;
using qvtest::MakeCrypto;
using qvtest::MakeData;
using qvtest::Outcome;
using qvtest::RandomBytes;

const Bytes kKey = {'s', 'e', 'c', 'r', 'e', 't'};
const Bytes kBefore = {'b', 'e', 'f', 'o', 'r', 'e'};

Bytes ModelContainer(const Bytes& plain, const Bytes& key, const qvtest::FeedbackCodes& codes) {
    return qvmodel::WriteContainer(qvtest::PiWords(), plain, key, codes.header, codes.body);
}

qvmodel::ReadResult ModelRead(const Bytes& container, const Bytes& key) {
    return qvmodel::ReadContainer(qvtest::PiWords(), container, key);
}

// ---- the format

TEST(Container, EveryByteIsWhatTheModelWrites) {
    RandomBytes random(40);
    for (std::size_t size = 0; size <= 300; ++size) {
        const Bytes plain = random.Make(size);
        const Bytes key = random.Make(1 + random.Below(56));
        const qvtest::FeedbackCodes codes = qvtest::Seed(static_cast<unsigned>(size));
        EXPECT_EQ(Encode(plain, key), ModelContainer(plain, key, codes)) << size;
    }
}

TEST(Container, BodiesOfManyPiecesAreWhatTheModelWrites) {
    RandomBytes random(41);
    for (std::size_t size : {16383, 16384, 16385, 16392, 32768, 32773, 200000}) {
        const Bytes plain = random.Make(size);
        const qvtest::FeedbackCodes codes = qvtest::Seed(7);
        const Bytes container = Encode(plain, kKey);
        EXPECT_TRUE(container == ModelContainer(plain, kKey, codes)) << size;
        EXPECT_TRUE(Decode(container, kKey).bytes == plain) << size;
    }
}

TEST(Container, ReaderAndModelReaderAgree) {
    RandomBytes random(42);
    for (std::size_t size = 0; size <= 300; ++size) {
        const Bytes plain = random.Make(size);
        const Bytes container = Encode(plain, kKey);
        const qvmodel::ReadResult model = ModelRead(container, kKey);
        EXPECT_EQ(model.code, 0) << size;
        EXPECT_EQ(model.plain, plain) << size;
        const Outcome ours = Decode(container, kKey);
        EXPECT_EQ(ours.code, 0) << size;
        EXPECT_EQ(ours.bytes, plain) << size;
    }
}

TEST(Container, OfNothingIsTheHeaderAlone) {
    const Bytes container = Encode({}, kKey);
    EXPECT_EQ(container.size(), 64u);
    const qvmodel::Md5State keyHash = qvmodel::HashMd5(kKey);
    EXPECT_TRUE(std::equal(container.begin() + 40, container.begin() + 56,
                           reinterpret_cast<const std::uint8_t*>(keyHash.data())));
    const Outcome decoded = Decode(container, kKey);
    EXPECT_EQ(decoded.code, 0);
    EXPECT_TRUE(decoded.bytes.empty());
}

TEST(Container, PadsTheLastBlockWithZeros) {
    const Bytes plain(9, 'x');
    const Bytes container = Encode(plain, kKey);
    ASSERT_EQ(container.size(), 64u + 16);
    qvmodel::Blowfish cipher(qvtest::PiWords(), kKey);
    cipher.feedback = 0;
    for (int i = 7; i >= 0; --i)
        cipher.feedback = cipher.feedback << 8 | container[56 + static_cast<std::size_t>(i)];
    Bytes body(16);
    cipher.DecryptBlock(&container[64], &body[0]);
    cipher.DecryptBlock(&container[72], &body[8]);
    Bytes expected = plain;
    expected.resize(16);
    EXPECT_EQ(body, expected);
    EXPECT_EQ(Decode(container, kKey).bytes, plain);
}

TEST(Container, TwoOfTheSameBytesDiffer) {
    const Bytes plain(20, 1);
    const Bytes first = Encode(plain, kKey), second = Encode(plain, kKey);
    EXPECT_NE(first, second);
    EXPECT_EQ(Decode(first, kKey).bytes, Decode(second, kKey).bytes);
}

TEST(Container, SeededRunRepeatsItself) {
    const Bytes plain(20, 1);
    qvtest::Seed(5);
    const Bytes first = Encode(plain, kKey);
    qvtest::Seed(5);
    EXPECT_EQ(Encode(plain, kKey), first);
    // Every cipher draws, also those that only decipher.
    Decode(first, kKey);
    const int after = QVRandom();
    qvtest::Seed(5);
    for (int i = 0; i < 4 * 4; ++i)
        QVRandom();
    EXPECT_EQ(QVRandom(), after);
}

// ---- keys

TEST(Crypto, ShortKeysAreRepeatedToTheMinimumLength) {
    const Bytes plain = {1, 2, 3};
    const Owned source = MakeData(plain);
    const Owned destination = MakeData({});
    const Owned in(QVStreamCreateWithMemory(source.Get()));
    const Owned out(QVStreamCreateWithMemory(destination.Get()));
    const Owned crypto = MakeCrypto({}, in, out);
    EXPECT_EQ(QVCryptoSetKey(crypto.Get(), "abcde", 5, 16), 0);
    EXPECT_EQ(QVCryptoEncode(crypto.Get(), 3), 0);
    const std::string repeated = "abcdeabcdeabcdea";
    EXPECT_EQ(Decode(BytesOf(destination.Get()), Bytes(repeated.begin(), repeated.end())).bytes, plain);
}

TEST(Crypto, KeysHaveOneToFiftySixBytes) {
    const Owned crypto(QVCryptoCreate());
    const Bytes key(57, 1);
    EXPECT_EQ(QVCryptoSetKey(crypto.Get(), key.data(), 56, 0), 0);
    EXPECT_EQ(QVCryptoSetKey(crypto.Get(), key.data(), 1, 56), 0);
    EXPECT_EQ(QVCryptoSetKey(crypto.Get(), nullptr, 8, 0), -2);
    EXPECT_EQ(QVCryptoSetKey(crypto.Get(), key.data(), 0, 16), -2);
    EXPECT_EQ(QVCryptoSetKey(crypto.Get(), key.data(), 57, 0), -2);
    EXPECT_EQ(QVCryptoSetKey(crypto.Get(), key.data(), 8, 57), -2);
    EXPECT_EQ(QVCryptoSetKey(crypto.Get(), key.data(), 8, ULONG_MAX), -2);
}

TEST(Crypto, RefusedKeyTakesTheOldOneAway) {
    const Owned source = MakeData({1, 2, 3});
    const Owned destination = MakeData({});
    const Owned in(QVStreamCreateWithMemory(source.Get()));
    const Owned out(QVStreamCreateWithMemory(destination.Get()));
    const Owned crypto = MakeCrypto(kKey, in, out);
    EXPECT_EQ(QVCryptoSetKey(crypto.Get(), nullptr, 0, 0), -2);
    EXPECT_EQ(QVCryptoEncode(crypto.Get(), 3), -2);
    EXPECT_EQ(QVDataGetSize(destination.Get()), 0u);
}

// ---- refusals

TEST(Container, OneThousandWrongKeysWriteNothing) {
    RandomBytes random(43);
    const Bytes key = random.Make(16);
    const Bytes container = Encode(random.Make(40), key);
    for (int i = 0; i < 1000; ++i) {
        Bytes wrong = key;
        if (i < 128) {
            wrong[static_cast<std::size_t>(i / 8)] ^= static_cast<std::uint8_t>(1 << i % 8);
        } else {
            wrong = random.Make(1 + random.Below(56));
        }
        const Outcome outcome = Decode(container, wrong, kBefore);
        EXPECT_EQ(outcome.code, -400);
        EXPECT_EQ(outcome.bytes, kBefore);
    }
}

// The fingerprint covers body and key; a changed header size misses the body. A changed plaintext size or
// body feedback code is not noticed.
bool IsCovered(std::size_t offset) {
    const bool isPlaintextSize = offset >= 32 && offset < 40;
    const bool isBodyFeedbackCode = offset >= 56 && offset < 64;
    return !isPlaintextSize && !isBodyFeedbackCode;
}

TEST(Container, EveryChangedByteHasItsOutcome) {
    RandomBytes random(44);
    const Bytes plain = random.Make(29);
    const Bytes container = Encode(plain, kKey);
    for (std::size_t i = 0; i < container.size(); ++i) {
        for (int change : {0x01, 0x80, 0xFF}) {
            Bytes changed = container;
            changed[i] ^= static_cast<std::uint8_t>(change);
            const Outcome outcome = Decode(changed, kKey);
            const qvmodel::ReadResult model = ModelRead(changed, kKey);
            EXPECT_EQ(outcome.code, model.code) << "byte " << i;
            EXPECT_EQ(outcome.bytes, model.plain) << "byte " << i;
            if (i < 16) {
                EXPECT_EQ(outcome.code, -5) << "byte " << i;
            } else if (IsCovered(i)) {
                EXPECT_EQ(outcome.code, -400) << "byte " << i;
            }
            if (outcome.code != 0) {
                EXPECT_EQ(Decode(changed, kKey, kBefore).bytes, kBefore) << "byte " << i;
            }
        }
    }
}

TEST(Container, EveryTruncationIsRefused) {
    RandomBytes random(45);
    const Bytes container = Encode(random.Make(100), kKey);
    for (std::size_t size = 0; size < container.size(); ++size) {
        const Outcome outcome = Decode(
            Bytes(container.begin(), container.begin() + static_cast<std::ptrdiff_t>(size)), kKey, kBefore);
        EXPECT_EQ(outcome.code, -400) << size;
        EXPECT_EQ(outcome.bytes, kBefore) << size;
    }
}

TEST(Container, BytesBehindItAreRefused) {
    Bytes container = Encode(Bytes(10, 1), kKey);
    for (int i = 0; i < 16; ++i) {
        container.push_back(0);
        EXPECT_EQ(Decode(container, kKey, kBefore).code, -400);
    }
}

TEST(Container, NoiseIsRefused) {
    RandomBytes random(46);
    for (int i = 0; i < 200; ++i) {
        Bytes noise = random.Make(random.Below(300));
        if (i % 2 == 0 && noise.size() >= 16) std::copy_n("A079F01F8F7A42D2", 16, noise.begin());
        const Outcome outcome = Decode(noise, kKey, kBefore);
        EXPECT_EQ(outcome.code, ModelRead(noise, kKey).code);
        EXPECT_NE(outcome.code, 0);
        EXPECT_EQ(outcome.bytes, kBefore);
    }
}

// ---- headers that no writer writes

// A container with a right fingerprint whose header claims what it likes.
Bytes Craft(std::uint64_t headerSize, std::uint64_t plaintextSize, const Bytes& behindHeaderFields) {
    const auto put = [](Bytes& bytes, std::size_t at, std::uint64_t value) {
        for (std::size_t i = 0; i < 8; ++i)
            bytes[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
    };
    Bytes container(64);
    std::copy_n("A079F01F8F7A42D2", 16, container.begin());
    put(container, 24, headerSize);
    put(container, 32, plaintextSize);
    put(container, 56, 0x0123456789ABCDEF);
    qvmodel::Blowfish cipher(qvtest::PiWords(), kKey);
    cipher.EncryptBlock(&container[24], &container[24]);
    cipher.EncryptBlock(&container[32], &container[32]);
    container.insert(container.end(), behindHeaderFields.begin(), behindHeaderFields.end());
    if (headerSize <= container.size()) {
        Bytes hashed(container.begin() + static_cast<std::ptrdiff_t>(headerSize), container.end());
        hashed.insert(hashed.end(), kKey.begin(), kKey.end());
        const qvmodel::Md5State digest = qvmodel::HashMd5(hashed);
        std::memcpy(&container[40], digest.data(), 16);
    }
    return container;
}

void ExpectAsTheModel(const Bytes& container, int code, const char* what) {
    const qvmodel::ReadResult model = ModelRead(container, kKey);
    EXPECT_EQ(model.code, code) << what;
    Bytes expected = kBefore;
    std::copy_n(model.plain.begin(), std::min(expected.size(), model.plain.size()), expected.begin());
    if (model.plain.size() > expected.size()) expected = model.plain;
    const Outcome outcome = Decode(container, kKey, kBefore);
    EXPECT_EQ(outcome.code, code) << what;
    EXPECT_EQ(outcome.bytes, expected) << what;
}

TEST(Container, BodyBeginsWhereTheHeaderSizeSays) {
    RandomBytes random(47);
    ExpectAsTheModel(Craft(64, 24, random.Make(24)), 0, "as written");
    ExpectAsTheModel(Craft(72, 24, random.Make(32)), 0, "eight bytes between header and body");
    ExpectAsTheModel(Craft(61, 24, random.Make(21)), 0, "the body feedback code is part of the body as well");
    ExpectAsTheModel(Craft(56, 24, random.Make(16)), 0, "the body feedback code is not read: zero");
    ExpectAsTheModel(Craft(88, 24, random.Make(24)), 0, "nothing but header");
    ExpectAsTheModel(Craft(1064, 0, random.Make(1000)), 0, "nothing but a long header");
}

TEST(Container, HeaderSizesWithoutAFingerprintAreRefused) {
    RandomBytes random(48);
    for (std::uint64_t headerSize : {0, 1, 8, 24, 31, 32, 33, 39, 40, 41, 44, 48, 52})
        ExpectAsTheModel(Craft(headerSize, 24, random.Make(24)), -400, "short header");
    for (std::uint64_t headerSize : {89ull, 96ull, 1ull << 32, 1ull << 63, ~0ull})
        ExpectAsTheModel(Craft(headerSize, 24, random.Make(24)), -400, "header beyond the end");
}

TEST(Container, PlaintextSizeCutsButNeverExtends) {
    RandomBytes random(49);
    for (std::uint64_t size : {0ull, 1ull, 7ull, 8ull, 9ull, 23ull, 24ull, 25ull, 1ull << 32, ~0ull})
        ExpectAsTheModel(Craft(64, size, random.Make(24)), 0, "plaintext size");
}

TEST(Container, IncompleteLastBlockIsRefused) {
    RandomBytes random(50);
    for (std::size_t extra = 1; extra < 8; ++extra)
        ExpectAsTheModel(Craft(64, 24, random.Make(24 + extra)), -400, "odd body");
}

// ---- streams

TEST(Crypto, WorksFromTheMarkersOn) {
    RandomBytes random(51);
    const Bytes plain = random.Make(50);
    Bytes sourceBytes = random.Make(13);
    sourceBytes.insert(sourceBytes.end(), plain.begin(), plain.end());
    sourceBytes.push_back('.');

    const Owned source = MakeData(sourceBytes);
    const Owned middle = MakeData(Bytes(5, 'm'));
    const Owned in(QVStreamCreateWithMemory(source.Get()));
    const Owned out(QVStreamCreateWithMemory(middle.Get()));
    QVStreamSetMarker(in.Get(), 0, 13);
    QVStreamSetMarker(out.Get(), 0, 3);
    EXPECT_EQ(QVCryptoEncode(MakeCrypto(kKey, in, out).Get(), 50), 0);
    EXPECT_EQ(QVStreamGetMarker(in.Get()), 63);
    EXPECT_EQ(QVStreamGetMarker(out.Get()), 3 + 64 + 56);
    ASSERT_EQ(QVDataGetSize(middle.Get()), 3u + 64 + 56);
    const Bytes container = BytesOf(middle.Get());
    EXPECT_EQ(Bytes(container.begin(), container.begin() + 3), Bytes(3, 'm'));
    EXPECT_EQ(ModelRead(Bytes(container.begin() + 3, container.end()), kKey).plain, plain);

    const Owned result = MakeData(Bytes(60, 'r'));
    const Owned back(QVStreamCreateWithMemory(result.Get()));
    QVStreamSetMarker(out.Get(), 0, 3);
    QVStreamSetMarker(back.Get(), 0, 4);
    EXPECT_EQ(QVCryptoDecode(MakeCrypto(kKey, out, back).Get(), 64 + 56), 0);
    Bytes expected(60, 'r');
    std::copy(plain.begin(), plain.end(), expected.begin() + 4);
    EXPECT_EQ(BytesOf(result.Get()), expected);
}

TEST(Crypto, RefusesToRunWithoutWhatItNeeds) {
    const Owned source = MakeData(Bytes(100, 1));
    const Owned destination = MakeData(kBefore);
    const Owned in(QVStreamCreateWithMemory(source.Get()));
    const Owned out(QVStreamCreateWithMemory(destination.Get()));
    const Owned none;
    for (auto* process : {&QVCryptoEncode, &QVCryptoDecode}) {
        EXPECT_EQ(process(MakeCrypto({}, in, out).Get(), 100), -2) << "no key";
        EXPECT_EQ(process(MakeCrypto(kKey, none, out).Get(), 0), -2) << "no source";
        EXPECT_EQ(process(MakeCrypto(kKey, in, none).Get(), 100), -2) << "no destination";
        EXPECT_EQ(process(MakeCrypto(kKey, in, in).Get(), 100), -2) << "one stream on both sides";
        EXPECT_EQ(process(MakeCrypto(kKey, in, out).Get(), 101), -2) << "source too short";
        EXPECT_EQ(process(MakeCrypto(kKey, in, out).Get(), ULLONG_MAX), -2) << "size beyond all streams";
        QVStreamSetMarker(in.Get(), 0, 60);
        EXPECT_EQ(process(MakeCrypto(kKey, in, out).Get(), 41), -2) << "source too short from its marker on";
        QVStreamSetMarker(in.Get(), 0, 0);
    }
    EXPECT_EQ(BytesOf(destination.Get()), kBefore);
}

TEST(Crypto, RetainsItsStreams) {
    const Owned data = MakeData({});
    const Owned first(QVStreamCreateWithMemory(data.Get()));
    const Owned second(QVStreamCreateWithMemory(data.Get()));
    Owned crypto(QVCryptoCreate());
    EXPECT_EQ(QVGetTypeID(crypto.Get()), 10);
    EXPECT_EQ(QVCryptoGetSrcStream(crypto.Get()), nullptr);
    EXPECT_EQ(QVCryptoGetDstStream(crypto.Get()), nullptr);

    QVCryptoSetSrcStream(crypto.Get(), first.Get());
    QVCryptoSetSrcStream(crypto.Get(), first.Get());
    EXPECT_EQ(QVGetRetainCount(first.Get()), 2u);
    QVCryptoSetSrcStream(crypto.Get(), second.Get());
    EXPECT_EQ(QVGetRetainCount(first.Get()), 1u);
    EXPECT_EQ(QVCryptoGetSrcStream(crypto.Get()), second.Get());
    QVCryptoSetSrcStream(crypto.Get(), nullptr);
    EXPECT_EQ(QVCryptoGetSrcStream(crypto.Get()), nullptr);
    EXPECT_EQ(QVGetRetainCount(second.Get()), 1u);

    QVCryptoSetDstStream(crypto.Get(), first.Get());
    QVCryptoSetDstStream(crypto.Get(), nullptr);
    EXPECT_EQ(QVCryptoGetDstStream(crypto.Get()), first.Get());
    QVCryptoSetDstStream(crypto.Get(), second.Get());
    EXPECT_EQ(QVGetRetainCount(first.Get()), 1u);
    EXPECT_EQ(QVGetRetainCount(second.Get()), 2u);
    crypto.Reset();
    EXPECT_EQ(QVGetRetainCount(second.Get()), 1u);
}

// ---- files

Owned OpenFile(const std::string& path, bool forWriting) {
    Owned file(QVFileCreate());
    const Owned text(QVStringCreateWithCString(path.c_str()));
    QVFileSetPath(file.Get(), text.Get());
    EXPECT_EQ(forWriting ? QVFileOpenForWriting(file.Get()) : QVFileOpenForReading(file.Get()), 0);
    return file;
}

int ProcessFile(int (*process)(void*, unsigned long long), const std::string& from, const std::string& to) {
    const Owned in(QVStreamCreateWithFile(OpenFile(from, false).Get()));
    const Owned out(QVStreamCreateWithFile(OpenFile(to, true).Get()));
    return process(MakeCrypto(kKey, in, out).Get(), QVStreamGetSize(in.Get()));
}

std::string AsText(const Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

std::vector<std::size_t> RoundTripSizes() {
    std::vector<std::size_t> sizes;
    for (std::size_t size = 0; size <= 300; ++size)
        sizes.push_back(size);
    RandomBytes random(52);
    for (int i = 0; i < 3; ++i)
        sizes.push_back(random.Below(4 << 20));
    return sizes;
}

TEST(Container, RoundTripThroughFiles) {
    const qvtest::TemporaryDirectory directory;
    RandomBytes random(53);
    for (std::size_t size : RoundTripSizes()) {
        const Bytes plain = random.Make(size);
        const std::string number = std::to_string(size);
        qvtest::WriteFile(directory / "plain", AsText(plain));
        const qvtest::FeedbackCodes codes = qvtest::Seed(9);
        EXPECT_EQ(ProcessFile(&QVCryptoEncode, directory / "plain", directory / number), 0) << size;
        if (size <= 300) {
            EXPECT_EQ(qvtest::ReadFile(directory / number), AsText(ModelContainer(plain, kKey, codes)));
        }
        EXPECT_EQ(ProcessFile(&QVCryptoDecode, directory / number, directory / (number + ".back")), 0)
            << size;
        EXPECT_TRUE(qvtest::ReadFile(directory / (number + ".back")) == AsText(plain)) << size;
    }
}

TEST(Container, RoundTripThroughMemoryAndData) {
    const qv::LocalPool pool;
    RandomBytes random(54);
    const Owned key = MakeData({9});  // a key of one byte pads no plaintext but the empty one
    for (std::size_t size : RoundTripSizes()) {
        const Bytes plain = random.Make(size);
        EXPECT_TRUE(Decode(Encode(plain, kKey), kKey).bytes == plain) << size;

        const Owned data = MakeData(plain);
        void* container = QVCryptoEncodeData(data.Get(), key.Get());
        EXPECT_EQ(QVDataGetSize(container), 64 + (size + 7) / 8 * 8);
        void* back = QVCryptoDecodeData(container, key.Get());
        EXPECT_TRUE(BytesOf(back) == (size == 0 ? Bytes(1) : plain)) << size;
    }
}

TEST(Container, FullDiskIsReported) {
    const qvtest::TemporaryDirectory directory;
    RandomBytes random(55);
    qvtest::WriteFile(directory / "plain", AsText(random.Make(3000)));
    for (std::uint64_t room : {0, 1, 63, 64, 65, 1023, 1024, 1025, 2000, 3063}) {
        qvtest::FailingFiles files;
        files.LimitDisk(room);
        EXPECT_LT(
            ProcessFile(&QVCryptoEncode, directory / "plain", directory / ("full" + std::to_string(room))), 0)
            << room;
    }
}

TEST(Container, ReadErrorLeavesThePlaceholder) {
    const qvtest::TemporaryDirectory directory;
    RandomBytes random(56);
    qvtest::WriteFile(directory / "plain", AsText(random.Make(200000)));
    const Owned in(QVStreamCreateWithFile(OpenFile(directory / "plain", false).Get()));
    const Owned out(QVStreamCreateWithFile(OpenFile(directory / "container", true).Get()));
    const Owned crypto = MakeCrypto(kKey, in, out);
    qvtest::FailingFiles files;
    files.Fail(qvtest::FileOperation::kReadAt, qv::FileError::kOther, 4, true);
    EXPECT_EQ(QVCryptoEncode(crypto.Get(), 200000), -101);
    const std::string written = qvtest::ReadFile(directory / "container");
    EXPECT_GE(written.size(), 64u);
    EXPECT_EQ(written.substr(0, 64), std::string(64, '\0'));
}

// The next two reads fail: a stream's refill, which tells nobody, and the transfer that then misses the
// bytes.
class TwoReadErrors final : public qvtest::FailingFiles {
public:
    qv::FileError ReadAt(int descriptor, void* buffer, std::size_t size, std::uint64_t offset,
                         std::size_t& moved) override {
        if (left_ == 0) return FailingFiles::ReadAt(descriptor, buffer, size, offset, moved);
        --left_;
        return qv::FileError::kOther;
    }
    [[nodiscard]] bool HaveHappened() const { return left_ == 0; }

private:
    int left_ = 2;
};

// Decodes a container from a file that cannot be read, once, where the container's byte `at` should come. The
// bytes before it are in the stream's buffer already.
int CodeAfterReadErrorAt(std::size_t at, const Bytes& container) {
    const qvtest::TemporaryDirectory directory;
    Bytes passed(1024 - at);
    qvtest::WriteFile(directory / "container", AsText(passed) + AsText(container));
    const Owned in(QVStreamCreateWithFile(OpenFile(directory / "container", false).Get()));
    EXPECT_EQ(QVStreamGetBytes(in.Get(), passed.data(), passed.size(), nullptr, 1), 0);

    const Owned destination = MakeData(kBefore);
    const Owned out(QVStreamCreateWithMemory(destination.Get()));
    const Owned crypto = MakeCrypto(kKey, in, out);
    const TwoReadErrors errors;
    const int code = QVCryptoDecode(crypto.Get(), container.size());
    EXPECT_TRUE(errors.HaveHappened());
    EXPECT_EQ(BytesOf(destination.Get()), kBefore);
    return code;
}

TEST(Container, LastReadOfTheHeaderReplacesAnEarlierResult) {
    const Bytes container = Encode(Bytes(100, 1), kKey);
    for (std::size_t at : {16, 24})
        EXPECT_EQ(CodeAfterReadErrorAt(at, container), -101)
            << "before the header's size is known, byte " << at;
    for (std::size_t at : {32, 40, 44, 48, 52})
        EXPECT_EQ(CodeAfterReadErrorAt(at, container), -400) << "the error is forgotten, byte " << at;
    EXPECT_EQ(CodeAfterReadErrorAt(56, container), -101) << "the last read itself";

    const Bytes beyondItsEnd = Craft(1ull << 32, 24, Bytes(24, 1));
    EXPECT_EQ(CodeAfterReadErrorAt(32, beyondItsEnd), -101) << "in place of the header's size being wrong";
}

TEST(Container, EachFailingFileCallIsMet) {
    const qvtest::TemporaryDirectory directory;
    RandomBytes random(57);
    const std::string plain = AsText(random.Make(5000));
    qvtest::WriteFile(directory / "plain", plain);
    ASSERT_EQ(ProcessFile(&QVCryptoEncode, directory / "plain", directory / "container"), 0);
    for (const char* operation : {"encode", "decode"}) {
        const bool isEncoding = std::string(operation) == "encode";
        for (std::size_t k = 0;; ++k) {
            const std::string target = directory / (operation + std::to_string(k));
            const Owned in(QVStreamCreateWithFile(
                OpenFile(directory / (isEncoding ? "plain" : "container"), false).Get()));
            const Owned out(QVStreamCreateWithFile(OpenFile(target, true).Get()));
            const Owned crypto = MakeCrypto(kKey, in, out);
            const unsigned long long size = QVStreamGetSize(in.Get());
            qvtest::FailingFiles files;
            files.Fail(qvtest::FileOperation::kAny, qv::FileError::kOther, k);
            const int code =
                isEncoding ? QVCryptoEncode(crypto.Get(), size) : QVCryptoDecode(crypto.Get(), size);
            if (code == 0 && isEncoding) {
                EXPECT_EQ(qvtest::ReadFile(target).size(), 64u + 5000) << k;
            } else if (code == 0) {
                EXPECT_EQ(qvtest::ReadFile(target), plain) << k;
            }
            if (!files.HasFailed()) {
                EXPECT_EQ(code, 0);
                break;
            }
        }
    }
}

// ---- Data

TEST(CryptoData, ShortPlaintextIsPaddedToTheKeysSize) {
    const qv::LocalPool pool;
    const Owned key = MakeData(Bytes(10, 'k'));
    const Owned plain = MakeData({1, 2, 3});
    void* container = QVCryptoEncodeData(plain.Get(), key.Get());
    EXPECT_EQ(QVDataGetSize(container), 72u);
    EXPECT_EQ(BytesOf(QVCryptoDecodeData(container, key.Get())), (Bytes{1, 2, 3, 0, 0, 0, 0, 0, 0, 0}));

    void* empty = QVCryptoEncodeData(MakeData({}).Get(), key.Get());
    EXPECT_EQ(QVDataGetSize(empty), 64u);
    EXPECT_EQ(BytesOf(QVCryptoDecodeData(empty, key.Get())), Bytes(10));
}

TEST(CryptoData, ResultIsATemporaryObjectAndTheOnlyOne) {
    const Owned key = MakeData(kKey);
    const Owned plain = MakeData(Bytes(100, 1));
    const std::size_t live = qvtest::LiveAllocations();
    void* kept = nullptr;
    {
        const qv::LocalPool pool;
        void* container = QVCryptoEncodeData(plain.Get(), key.Get());
        EXPECT_EQ(QVGetRetainCount(container), 1u);
        kept = QVRetain(QVCryptoDecodeData(container, key.Get()));
        EXPECT_EQ(QVGetRetainCount(kept), 2u);
    }
    EXPECT_EQ(QVGetRetainCount(kept), 1u);
    EXPECT_EQ(BytesOf(kept), Bytes(100, 1));
    QVRelease(kept);
    EXPECT_EQ(qvtest::LiveAllocations(), live);
}

TEST(CryptoData, FailureIsNull) {
    const qv::LocalPool pool;
    const Owned key = MakeData(kKey);
    const Owned plain = MakeData(Bytes(100, 1));
    EXPECT_EQ(QVCryptoEncodeData(nullptr, key.Get()), nullptr);
    EXPECT_EQ(QVCryptoEncodeData(plain.Get(), nullptr), nullptr);
    EXPECT_EQ(QVCryptoEncodeData(plain.Get(), MakeData({}).Get()), nullptr);
    EXPECT_EQ(QVCryptoEncodeData(plain.Get(), MakeData(Bytes(57)).Get()), nullptr);
    EXPECT_EQ(QVCryptoDecodeData(nullptr, key.Get()), nullptr);
    EXPECT_EQ(QVCryptoDecodeData(plain.Get(), key.Get()), nullptr);
    EXPECT_EQ(QVCryptoDecodeData(plain.Get(), nullptr), nullptr);
}

// Bodies of a few blocks, and of several groups with and without a rest.
TEST(CryptoData, EveryChangedByteHasTheOutcomeOfTheModel) {
    RandomBytes random(49);
    const Owned key = MakeData(kKey);
    for (const std::size_t size : {29, 256, 300}) {
        const Bytes container = Encode(random.Make(size), kKey);
        for (std::size_t i = 0; i < container.size(); ++i) {
            const qv::LocalPool pool;
            Bytes changed = container;
            changed[i] ^= static_cast<std::uint8_t>(1 + random.Below(255));
            void* decoded = QVCryptoDecodeData(MakeData(changed).Get(), key.Get());
            const qvmodel::ReadResult model = ModelRead(changed, kKey);
            ASSERT_EQ(decoded != nullptr, model.code == 0) << "byte " << i;
            if (decoded == nullptr) continue;
            Bytes expected = model.plain;
            expected.resize(std::max(expected.size(), kKey.size()));
            ASSERT_EQ(BytesOf(decoded), expected) << "byte " << i;
        }
    }
}

TEST(CryptoData, BorrowedBytesServeAsWell) {
    const qv::LocalPool pool;
    char text[] = "text over the caller's own memory";
    const Owned data(QVDataCreateNoCopy(text, sizeof text, 0));
    const Owned key(QVDataCreateNoCopy(text, 4, 0));
    void* back = QVCryptoDecodeData(QVCryptoEncodeData(data.Get(), key.Get()), key.Get());
    EXPECT_EQ(BytesOf(back), Bytes(text, text + sizeof text));
}

// ---- memory

TEST(Crypto, EachFailingAllocationIsMet) {
    const qvtest::LogCapture log;  // failing Data says so
    const Bytes plain(100, 1);
    const Bytes container = Encode(plain, kKey);
    const Owned key = MakeData(kKey);
    const std::size_t live = qvtest::LiveAllocations();
    for (auto* process : {&QVCryptoEncode, &QVCryptoDecode}) {
        const Owned source = MakeData(process == &QVCryptoEncode ? plain : container);
        const Owned in(QVStreamCreateWithMemory(source.Get()));
        const std::size_t failures = qvtest::FailEachAllocation([&] {
            const Owned destination = MakeData(kBefore);
            const Owned out(QVStreamCreateWithMemory(destination.Get()));
            const Owned crypto = MakeCrypto(kKey, in, out);
            QVStreamSetMarker(in.Get(), 0, 0);
            const int code = process(crypto.Get(), QVDataGetSize(source.Get()));
            EXPECT_TRUE(code == 0 || code == -4 || code == -2) << code;
        });
        EXPECT_GT(failures, 8u);
    }
    for (auto* process : {&QVCryptoEncodeData, &QVCryptoDecodeData}) {
        const Owned data = MakeData(process == &QVCryptoEncodeData ? plain : container);
        qvtest::FailEachAllocation([&] {
            const Owned pool(QVTemporaryObjectsPoolCreate());
            if (!pool) return;
            void* result = process(data.Get(), key.Get());
            if (result != nullptr) {
                EXPECT_GE(QVDataGetSize(result), 100u);
            }
        });
    }
    EXPECT_EQ(qvtest::LiveAllocations(), live);
}

TEST(Crypto, OutOfMemoryWritesNothing) {
    const Owned source = MakeData(Bytes(100, 1));
    const Owned destination = MakeData(kBefore);
    const Owned in(QVStreamCreateWithMemory(source.Get()));
    const Owned out(QVStreamCreateWithMemory(destination.Get()));
    const Owned crypto = MakeCrypto(kKey, in, out);
    // Two ciphers of three blocks each and the piece come before the first byte.
    for (std::size_t k = 0; k < 7; ++k) {
        const qvtest::FailAllocation failing(k);
        EXPECT_EQ(QVCryptoEncode(crypto.Get(), 100), -4) << k;
        EXPECT_TRUE(failing.HasFailed()) << k;
    }
    EXPECT_EQ(BytesOf(destination.Get()), kBefore);
}

TEST(Crypto, MemoryDoesNotGrowWithTheContainer) {
    const auto allocates = [](std::size_t size) {
        const Owned source = MakeData(Bytes(size, 1));
        const Owned destination = MakeData({});
        QVDataReserve(destination.Get(), size + 100);
        const Owned in(QVStreamCreateWithMemory(source.Get()));
        const Owned out(QVStreamCreateWithMemory(destination.Get()));
        const Owned crypto = MakeCrypto(kKey, in, out);
        const std::size_t before = qvtest::AllocatedBytes();
        EXPECT_EQ(QVCryptoEncode(crypto.Get(), size), 0);
        return qvtest::AllocatedBytes() - before;
    };
    EXPECT_EQ(allocates(1000), allocates(1000000));
}

// ---- null

TEST(Crypto, NullHandles) {
    EXPECT_EQ(QVCryptoSetKey(nullptr, "k", 1, 0), -2);
    QVCryptoSetSrcStream(nullptr, nullptr);
    QVCryptoSetDstStream(nullptr, nullptr);
    EXPECT_EQ(QVCryptoGetSrcStream(nullptr), nullptr);
    EXPECT_EQ(QVCryptoGetDstStream(nullptr), nullptr);
    EXPECT_EQ(QVCryptoEncode(nullptr, 0), -2);
    EXPECT_EQ(QVCryptoDecode(nullptr, 0), -2);
}

}  // namespace
