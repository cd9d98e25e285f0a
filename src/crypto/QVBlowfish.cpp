#include <QVFoundation/QVBlowfish.h>

#include "crypto/QVBlowfishImpl.h"
#include "runtime/Guard.h"

using qv::With;

namespace {

void ProcessBlock(void* blowfish, const void* in, void* out, bool encrypt) noexcept {
    if (in == nullptr || out == nullptr) return;
    With<QVBlowfishImpl>(blowfish, [&](QVBlowfishImpl& b) { b.ProcessBlock(in, out, encrypt); });
}

}  // namespace

void* QVBlowfishCreate() noexcept {
    return qv::CreateObject<QVBlowfishImpl>();
}

QVBoolean QVBlowfishSetKey(void* blowfish, const void* key, unsigned long length) noexcept {
    return With<QVBlowfishImpl>(blowfish, QVBoolean{0},
                                [&](QVBlowfishImpl& b) { return b.SetKey(key, length); });
}

void QVBlowfishEncryptBlock(void* blowfish, const void* in, void* out) noexcept {
    ProcessBlock(blowfish, in, out, true);
}

void QVBlowfishDecryptBlock(void* blowfish, const void* in, void* out) noexcept {
    ProcessBlock(blowfish, in, out, false);
}

void QVBlowfishSetCryptoMode(void* blowfish, unsigned long mode) noexcept {
    With<QVBlowfishImpl>(blowfish,
                         [&](QVBlowfishImpl& b) { b.SetCryptoMode(static_cast<std::uint32_t>(mode)); });
}

unsigned long QVBlowfishGetCryptoMode(void* blowfish) noexcept {
    return With<QVBlowfishImpl>(blowfish, 0UL, [](const QVBlowfishImpl& b) { return b.GetCryptoMode(); });
}

void QVBlowfishSetFeedbackCode(void* blowfish, unsigned long long code) noexcept {
    With<QVBlowfishImpl>(blowfish, [&](QVBlowfishImpl& b) { b.SetFeedbackCode(code); });
}

unsigned long long QVBlowfishGetFeedbackCode(void* blowfish) noexcept {
    return With<QVBlowfishImpl>(blowfish, 0ULL, [](const QVBlowfishImpl& b) { return b.GetFeedbackCode(); });
}
