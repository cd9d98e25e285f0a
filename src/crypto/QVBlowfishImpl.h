// The cipher behind a Blowfish handle.
#pragma once

#include "base/secure_wipe.h"
#include "crypto/blowfish_rounds.h"
#include "runtime/QVCBase.h"

// The Blowfish cipher with its chaining: the tables of one key and the feedback code.
class QVBlowfishImpl final : public QVCBase {
public:
    // Chained, with a random feedback code and without a key.
    QVBlowfishImpl();

    [[nodiscard]] std::uint16_t GetTypeID() const override;

    // False, changing nothing, when the key is null or its length is 0 or above 56.
    [[nodiscard]] bool SetKey(const void* key, std::size_t length);
    // Takes over another cipher's key, which must have one, without preparing the tables again.
    void SetKeyOf(const QVBlowfishImpl& other);
    [[nodiscard]] bool HasKey() const noexcept { return substitutes_ != nullptr; }
    // The tables of the key, borrowed. Only with a key.
    [[nodiscard]] qv::BlowfishTables GetTables() const noexcept {
        return {substitutes_->data(), subkeys_->data()};
    }

    // The cipher itself, without chaining. Only with a key.
    [[nodiscard]] qv::BlowfishHalves Encipher(qv::BlowfishHalves block) const noexcept {
        return qv::EncipherBlowfish(GetTables(), block);
    }
    [[nodiscard]] qv::BlowfishHalves Decipher(qv::BlowfishHalves block) const noexcept {
        return qv::DecipherBlowfish(GetTables(), block);
    }
    // One block of 8 bytes through cipher and chain; in and out may be the same. Zeros without a key.
    void ProcessBlock(const void* in, void* out, bool encrypt) noexcept;

    void SetCryptoMode(std::uint32_t mode) noexcept { mode_ = mode; }
    [[nodiscard]] std::uint32_t GetCryptoMode() const noexcept { return mode_; }
    void SetFeedbackCode(std::uint64_t code) noexcept { feedback_ = qv::BlowfishFeedback(code); }
    [[nodiscard]] std::uint64_t GetFeedbackCode() const noexcept { return feedback_.Code(); }

private:
    [[nodiscard]] bool IsChained() const noexcept { return mode_ == 0; }
    [[nodiscard]] qv::BlowfishHalves Encrypt(qv::BlowfishHalves block) noexcept;
    [[nodiscard]] qv::BlowfishHalves Decrypt(qv::BlowfishHalves block) noexcept;

    qv::WipedPtr<qv::BlowfishSubstitutes> substitutes_;  // null without a key
    qv::WipedPtr<qv::BlowfishSubkeys> subkeys_;          // null without a key
    std::uint32_t mode_ = 0;
    qv::BlowfishFeedback feedback_;
};
