#include "crypto/QVCryptoImpl.h"

#include <algorithm>
#include <cstring>

#include <QVFoundation/QVData.h>
#include <QVFoundation/QVStream.h>

#include "base/secure_wipe.h"
#include "crypto/QVBlowfishImpl.h"
#include "crypto/container_decipher.h"
#include "crypto/container_encipher.h"
#include "runtime/Guard.h"

namespace {

constexpr std::size_t kBlock = qv::kBlowfishBlockSize;

// A cipher for a container: chained, with a random feedback code of its own and the container's key.
class KeyedCipher {
public:
    explicit KeyedCipher(void* key) : cipher_(new QVBlowfishImpl), owner_(qv::ToHandle(cipher_)) {
        if (!cipher_->SetKey(QVDataGetImutableBuffer(key), QVDataGetSize(key))) throw std::bad_alloc();
    }
    // Another one for the same container.
    explicit KeyedCipher(const QVBlowfishImpl& first)
        : cipher_(new QVBlowfishImpl), owner_(qv::ToHandle(cipher_)) {
        cipher_->SetKeyOf(first);
    }
    QVBlowfishImpl& operator*() const noexcept { return *cipher_; }
    QVBlowfishImpl* operator->() const noexcept { return cipher_; }

private:
    QVBlowfishImpl* cipher_;
    qv::Owned owner_;
};

// Reads all `size` bytes, or says why not; `done` came in either case.
int Get(void* stream, void* bytes, std::size_t size, unsigned long& done) noexcept {
    done = 0;
    const int result = QVStreamGetBytes(stream, bytes, size, &done, 1);
    return result == QVNoErr && done < size ? int{QVErrReadShort} : result;
}

int Get(void* stream, void* bytes, std::size_t size) noexcept {
    unsigned long done = 0;
    return Get(stream, bytes, size, done);
}

int Put(void* stream, const void* bytes, std::size_t size) noexcept {
    return size == 0 ? int{QVNoErr} : QVStreamPutBytes(stream, bytes, size, nullptr, 1);
}

int Get32(void* stream, std::uint32_t& value) noexcept {
    std::uint8_t bytes[4] = {};
    const int result = Get(stream, bytes, sizeof bytes);
    if (result == QVNoErr) value = qv::LoadLittle32(bytes);
    return result;
}

int Get64(void* stream, std::uint64_t& value) noexcept {
    std::uint8_t bytes[8] = {};
    const int result = Get(stream, bytes, sizeof bytes);
    if (result == QVNoErr) value = qv::LoadLittle64(bytes);
    return result;
}

int GetEnciphered64(void* stream, QVBlowfishImpl& cipher, std::uint64_t& value) noexcept {
    std::uint8_t block[kBlock] = {};
    const int result = Get(stream, block, sizeof block);
    if (result != QVNoErr) return result;
    cipher.ProcessBlock(block, block, false);
    value = qv::LoadLittle64(block);
    return QVNoErr;
}

// How much of what is left goes into one piece.
template <class Piece>
std::size_t NextSize(std::uint64_t left, const Piece& piece) noexcept {
    return static_cast<std::size_t>(std::min<std::uint64_t>(left, piece.size()));
}

constexpr std::size_t WholeBlocks(std::size_t size) noexcept {
    return size / kBlock * kBlock;
}

// Fills the last block up with zeros and gives the size with it.
std::size_t PadToBlock(std::uint8_t* bytes, std::size_t size) noexcept {
    const std::size_t whole = WholeBlocks(size + kBlock - 1);
    std::memset(bytes + size, 0, whole - size);
    return whole;
}

}  // namespace

QVCryptoImpl::~QVCryptoImpl() {
    DropKey();
}

std::uint16_t QVCryptoImpl::GetTypeID() const {
    return QVTypeIDCrypto;
}

int QVCryptoImpl::SetKey(const void* key, std::size_t length, std::size_t minimumLength) {
    DropKey();
    const std::size_t size = std::max(length, minimumLength);
    if (key == nullptr || length == 0 || size > qv::kBlowfishLongestKey) return QVErrParam;
    qv::Owned data(QVDataCreate(nullptr, size));
    if (!data) return QVErrMemory;
    auto* bytes = static_cast<std::uint8_t*>(QVDataGetMutableBuffer(data.Get()));
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<const std::uint8_t*>(key)[i % length];
    key_ = std::move(data);
    return QVNoErr;
}

void QVCryptoImpl::DropKey() noexcept {
    qv::SecureWipe(QVDataGetMutableBuffer(key_.Get()), QVDataGetSize(key_.Get()));
    key_.Reset();
}

void QVCryptoImpl::SetSrcStream(void* stream) noexcept {
    source_ = qv::Owned::Retaining(stream);
}

void QVCryptoImpl::SetDstStream(void* stream) noexcept {
    if (stream != nullptr) destination_ = qv::Owned::Retaining(stream);
}

bool QVCryptoImpl::CanProcess(std::uint64_t size) const noexcept {
    if (!key_ || !source_ || !destination_ || source_.Get() == destination_.Get()) return false;
    const auto start = static_cast<std::uint64_t>(QVStreamGetMarker(source_.Get()));
    const std::uint64_t end = QVStreamGetSize(source_.Get());
    return start <= end && size <= end - start;
}

// Flushes the destination in any case; a success turns into the flush's failure. Data streams answer 1 for a
// flush that worked.
int QVCryptoImpl::FlushAfter(int result) const noexcept {
    const int flushed = QVStreamFlush(destination_.Get());
    return result == QVNoErr && flushed < 0 ? flushed : result;
}

int QVCryptoImpl::Encode(std::uint64_t size) {
    if (!CanProcess(size)) return QVErrParam;
    return FlushAfter(qv::Guard(int{QVErrMemory}, [&] { return WriteContainer(size); }));
}

int QVCryptoImpl::WriteContainer(std::uint64_t plaintextSize) {
    // Each draws its feedback code when it is made: the body's cipher first.
    const KeyedCipher bodyCipher(key_.Get());
    const KeyedCipher headerCipher(*bodyCipher);
    qv::ContainerHeader header;
    header.bodyFeedbackCode = bodyCipher->GetFeedbackCode();
    header.headerFeedbackCode = headerCipher->GetFeedbackCode();
    header.headerSize = qv::kContainerHeaderSize;
    header.plaintextSize = plaintextSize;
    const qv::WipedPtr<Piece> piece(new Piece);

    const long long start = QVStreamGetMarker(destination_.Get());
    constexpr qv::ContainerHeaderBytes kPlaceholder{};
    if (const int result = Put(destination_.Get(), kPlaceholder.data(), kPlaceholder.size())) return result;
    if (const int result = WriteBody(*bodyCipher, *piece, header)) return result;

    const long long end = QVStreamGetMarker(destination_.Get());
    QVStreamSetMarker(destination_.Get(), 0, start);
    const int result = WriteHeader(*headerCipher, header);
    QVStreamSetMarker(destination_.Get(), 0, end);
    return result;
}

int QVCryptoImpl::WriteBody(const QVBlowfishImpl& cipher, Piece& piece, qv::ContainerHeader& header) {
    qv::ContainerEncipher encipher(cipher.GetTables(), header.bodyFeedbackCode);
    for (std::uint64_t left = header.plaintextSize; left > 0;) {
        const std::size_t wanted = NextSize(left, piece);
        unsigned long done = 0;
        const int read = Get(source_.Get(), piece.data(), wanted, done);
        // What came before an error is still enciphered, as far as it fills blocks; only the last block is
        // padded.
        const std::size_t whole = read == QVNoErr ? PadToBlock(piece.data(), done) : WholeBlocks(done);
        encipher.Encipher(piece.data(), whole);
        const int written = Put(destination_.Get(), piece.data(), whole);
        if (written != QVNoErr) return written;
        if (read != QVNoErr) return read;
        left -= wanted;
    }
    header.fingerprint = encipher.Finish(QVDataGetImutableBuffer(key_.Get()), QVDataGetSize(key_.Get()));
    return QVNoErr;
}

int QVCryptoImpl::WriteHeader(QVBlowfishImpl& cipher, const qv::ContainerHeader& header) {
    qv::ContainerHeaderBytes bytes = header.ToBytes();
    for (const std::size_t offset : {qv::kHeaderSizeOffset, qv::kPlaintextSizeOffset})
        cipher.ProcessBlock(bytes.data() + offset, bytes.data() + offset, true);
    return Put(destination_.Get(), bytes.data(), bytes.size());
}

int QVCryptoImpl::Decode(std::uint64_t size) {
    if (!CanProcess(size)) return QVErrParam;
    return FlushAfter(qv::Guard(int{QVErrMemory}, [&] { return ReadContainer(size, true); }));
}

int QVCryptoImpl::DecodeUnseen(std::uint64_t size) {
    if (!CanProcess(size)) return QVErrParam;
    return FlushAfter(qv::Guard(int{QVErrMemory}, [&] { return ReadContainer(size, false); }));
}

int QVCryptoImpl::ReadContainer(std::uint64_t size, bool isSeen) {
    const long long start = QVStreamGetMarker(source_.Get());
    qv::ContainerHeader header;
    const KeyedCipher headerCipher(key_.Get());
    if (const int result = ReadHeader(size, *headerCipher, header)) return result;
    if (header.headerSize > size) return QVErrHashMismatch;
    const std::uint64_t bodySize = size - header.headerSize;
    if (bodySize % kBlock != 0) return QVErrHashMismatch;

    const qv::WipedPtr<Piece> piece(new Piece);
    const long long bodyStart = start + static_cast<long long>(header.headerSize);
    QVStreamSetMarker(source_.Get(), 0, bodyStart);
    if (isSeen) {
        if (const int result = CheckFingerprint(bodySize, *piece, header.fingerprint)) return result;
        QVStreamSetMarker(source_.Get(), 0, bodyStart);
        const KeyedCipher bodyCipher(*headerCipher);
        qv::ContainerDecipher decipher(bodyCipher->GetTables(), header.bodyFeedbackCode);
        return ReadBody(bodySize, decipher, *piece, header.plaintextSize);
    }
    const KeyedCipher bodyCipher(*headerCipher);
    qv::FingerprintingDecipher decipher(bodyCipher->GetTables(), header.bodyFeedbackCode);
    if (const int result = ReadBody(bodySize, decipher, *piece, header.plaintextSize)) return result;
    const auto fingerprint = decipher.Finish(QVDataGetImutableBuffer(key_.Get()), QVDataGetSize(key_.Get()));
    return fingerprint == header.fingerprint ? int{QVNoErr} : int{QVErrHashMismatch};
}

// Fields are read only as far as the header's own size reaches; those beyond stay zero.
int QVCryptoImpl::ReadHeader(std::uint64_t containerSize, QVBlowfishImpl& cipher,
                             qv::ContainerHeader& header) {
    if (containerSize < qv::kContainerHeaderSize) return QVErrHashMismatch;

    std::array<char, qv::kContainerSignatureSize> signature;
    if (const int result = Get(source_.Get(), signature.data(), signature.size())) return result;
    if (signature != qv::kContainerSignature) return QVErrFormat;

    if (const int result = Get64(source_.Get(), header.headerFeedbackCode)) return result;
    cipher.SetFeedbackCode(header.headerFeedbackCode);
    if (const int result = GetEnciphered64(source_.Get(), cipher, header.headerSize)) return result;

    int result = header.headerSize > containerSize ? int{QVErrHashMismatch} : int{QVNoErr};
    std::uint64_t consumed = 32;
    if (result == QVNoErr && consumed < header.headerSize) {
        result = GetEnciphered64(source_.Get(), cipher, header.plaintextSize);
        consumed += 8;
    }
    for (std::uint32_t& word : header.fingerprint) {
        if (result != QVNoErr || consumed >= header.headerSize) break;
        result = Get32(source_.Get(), word);
        consumed += 4;
    }
    // The result of this last read replaces an earlier one. A header that is too large for the container gets
    // no further for it: it leaves no body, which no fingerprint fits.
    if (consumed < header.headerSize) result = Get64(source_.Get(), header.bodyFeedbackCode);
    return result;
}

int QVCryptoImpl::CheckFingerprint(std::uint64_t bodySize, Piece& piece, const qv::Md5Words& fingerprint) {
    qv::Wiped<qv::Md5Block> block;  // meets the key
    qv::Md5Digest digest(*block);
    digest.Initialize();
    for (std::uint64_t left = bodySize; left > 0;) {
        const std::size_t wanted = NextSize(left, piece);
        if (const int result = Get(source_.Get(), piece.data(), wanted)) return result;
        digest.Update(piece.data(), wanted);
        left -= wanted;
    }
    digest.Update(QVDataGetImutableBuffer(key_.Get()), QVDataGetSize(key_.Get()));
    digest.Finish();
    return digest.GetWords() == fingerprint ? int{QVNoErr} : int{QVErrHashMismatch};
}

template <class Decipher>
int QVCryptoImpl::ReadBody(std::uint64_t bodySize, Decipher& decipher, Piece& piece,
                           std::uint64_t plaintextSize) {
    std::uint64_t plaintextLeft = plaintextSize;
    for (std::uint64_t left = bodySize; left > 0;) {
        const std::size_t wanted = NextSize(left, piece);
        unsigned long done = 0;
        const int read = Get(source_.Get(), piece.data(), wanted, done);
        const std::size_t whole = WholeBlocks(done);
        decipher.Decipher(piece.data(), whole);
        const auto plain = static_cast<std::size_t>(std::min<std::uint64_t>(plaintextLeft, whole));
        const int written = Put(destination_.Get(), piece.data(), plain);
        if (written != QVNoErr) return written;
        if (read != QVNoErr) return read;
        plaintextLeft -= plain;
        left -= wanted;
    }
    return QVNoErr;
}
