#include <QVFoundation/QVLibrary.h>
#include <QVFoundation/QVMD5.h>

#include "crypto/QVMD5Impl.h"
#include "runtime/Guard.h"

using qv::With;

namespace {

QVHashValue128 ToHashValue(const qv::Md5Words& words) noexcept {
    return {words[0], words[1], words[2], words[3]};
}

}  // namespace

void* QVMD5Create() noexcept {
    void* md5 = qv::CreateObject<QVMD5Impl>();
    if (md5 == nullptr) QVLog(L"Couldn't create the instance of the QVMD5.");
    return md5;
}

void QVMD5Initialize(void* md5) noexcept {
    With<QVMD5Impl>(md5, [](QVMD5Impl& m) { m.Initialize(); });
}

void QVMD5Update(void* md5, const void* bytes, unsigned long length) noexcept {
    if (bytes == nullptr) return;
    With<QVMD5Impl>(md5, [&](QVMD5Impl& m) { m.Update(bytes, length); });
}

void QVMD5Finish(void* md5) noexcept {
    With<QVMD5Impl>(md5, [](QVMD5Impl& m) { m.Finish(); });
}

QVHashValue128 QVMD5GetHashValue(void* md5) noexcept {
    return With<QVMD5Impl>(md5, QVHashValue128{}, [](QVMD5Impl& m) { return ToHashValue(m.GetHashValue()); });
}

QVHashValue128 QVHashMD5(const void* bytes, unsigned long length) noexcept {
    qv::Wiped<qv::Md5Block> block;
    qv::Md5Digest digest(*block);
    digest.Initialize();
    if (bytes != nullptr) digest.Update(bytes, length);
    digest.Finish();
    return ToHashValue(digest.GetWords());
}
