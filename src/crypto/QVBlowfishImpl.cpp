#include "crypto/QVBlowfishImpl.h"

#include <cstring>

#include <QVFoundation/QVObject.h>

#include "runtime/random_code.h"

QVBlowfishImpl::QVBlowfishImpl() : feedback_(qv::RandomCode()) {}

std::uint16_t QVBlowfishImpl::GetTypeID() const {
    return QVTypeIDBlowfish;
}

bool QVBlowfishImpl::SetKey(const void* key, std::size_t length) {
    if (key == nullptr || length == 0 || length > qv::kBlowfishLongestKey) return false;
    auto substitutes = qv::MakeWiped<qv::BlowfishSubstitutes>();
    auto subkeys = qv::MakeWiped<qv::BlowfishSubkeys>();
    qv::ExpandBlowfishKey(key, length, *substitutes, *subkeys);
    substitutes_ = std::move(substitutes);
    subkeys_ = std::move(subkeys);
    return true;
}

void QVBlowfishImpl::SetKeyOf(const QVBlowfishImpl& other) {
    auto substitutes = qv::MakeWiped<qv::BlowfishSubstitutes>();
    auto subkeys = qv::MakeWiped<qv::BlowfishSubkeys>();
    *substitutes = *other.substitutes_;
    *subkeys = *other.subkeys_;
    substitutes_ = std::move(substitutes);
    subkeys_ = std::move(subkeys);
}

void QVBlowfishImpl::ProcessBlock(const void* in, void* out, bool encrypt) noexcept {
    if (!HasKey()) {
        std::memset(out, 0, qv::kBlowfishBlockSize);
        return;
    }
    const qv::BlowfishHalves block = qv::LoadBlowfishBlock(in);
    qv::StoreBlowfishBlock(encrypt ? Encrypt(block) : Decrypt(block), out);
}

qv::BlowfishHalves QVBlowfishImpl::Encrypt(qv::BlowfishHalves block) noexcept {
    if (!IsChained()) return Encipher(block);
    block = Encipher(block ^ feedback_.Halves());
    feedback_ = qv::BlowfishFeedback(block);
    return block;
}

qv::BlowfishHalves QVBlowfishImpl::Decrypt(qv::BlowfishHalves block) noexcept {
    const qv::BlowfishHalves feedback = feedback_.Halves();
    feedback_ = qv::BlowfishFeedback(block);  // also where blocks stand alone
    block = Decipher(block);
    return IsChained() ? block ^ feedback : block;
}
