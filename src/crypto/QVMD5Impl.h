// The hasher behind an MD5 handle.
#pragma once

#include "base/secure_wipe.h"
#include "crypto/md5_digest.h"
#include "runtime/QVCBase.h"

// An MD5 hasher: a digest in progress and the block it fills, which is wiped at the end.
class QVMD5Impl final : public QVCBase {
public:
    QVMD5Impl() : QVMD5Impl(qv::MakeWiped<qv::Md5Block>()) {}

    [[nodiscard]] std::uint16_t GetTypeID() const override;

    void Initialize() noexcept { digest_.Initialize(); }
    void Update(const void* bytes, std::size_t length) noexcept { digest_.Update(bytes, length); }
    void Finish() noexcept { digest_.Finish(); }
    [[nodiscard]] const qv::Md5Words& GetHashValue() const noexcept { return digest_.GetWords(); }

private:
    explicit QVMD5Impl(qv::WipedPtr<qv::Md5Block> block) noexcept
        : digest_(*block), block_(std::move(block)) {}

    qv::Md5Digest digest_;
    qv::WipedPtr<qv::Md5Block> block_;
};
