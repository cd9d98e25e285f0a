// The encrypted container's writer and reader: a key and two streams.
#pragma once

#include "crypto/container_header.h"
#include "runtime/Owned.h"
#include "runtime/QVCBase.h"

class QVBlowfishImpl;

class QVCryptoImpl final : public QVCBase {
public:
    ~QVCryptoImpl() override;

    [[nodiscard]] std::uint16_t GetTypeID() const override;

    int SetKey(const void* key, std::size_t length, std::size_t minimumLength);
    void SetSrcStream(void* stream) noexcept;
    [[nodiscard]] void* GetSrcStream() const noexcept { return source_.Get(); }
    void SetDstStream(void* stream) noexcept;
    [[nodiscard]] void* GetDstStream() const noexcept { return destination_.Get(); }

    int Encode(std::uint64_t size);
    int Decode(std::uint64_t size);
    // For a destination that nobody sees before the call has succeeded: reads the source once. A wrong
    // fingerprint is then found after the plaintext has been written.
    int DecodeUnseen(std::uint64_t size);

private:
    // What the body moves through: large enough that the streams' own work does not count, small enough to
    // stay in the processor's cache.
    using Piece = std::array<std::uint8_t, 16 * 1024>;

    [[nodiscard]] bool CanProcess(std::uint64_t size) const noexcept;
    [[nodiscard]] int FlushAfter(int result) const noexcept;
    void DropKey() noexcept;

    int WriteContainer(std::uint64_t plaintextSize);
    int WriteBody(const QVBlowfishImpl& cipher, Piece& piece, qv::ContainerHeader& header);
    int WriteHeader(QVBlowfishImpl& cipher, const qv::ContainerHeader& header);

    int ReadContainer(std::uint64_t size, bool isSeen);
    int ReadHeader(std::uint64_t containerSize, QVBlowfishImpl& cipher, qv::ContainerHeader& header);
    int CheckFingerprint(std::uint64_t bodySize, Piece& piece, const qv::Md5Words& fingerprint);
    template <class Decipher>
    int ReadBody(std::uint64_t bodySize, Decipher& decipher, Piece& piece, std::uint64_t plaintextSize);

    qv::Owned key_;  // Data of the key's final length, or null
    qv::Owned source_;
    qv::Owned destination_;
};
