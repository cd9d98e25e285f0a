// The block compressor: the C functions.
#include <QVFoundation/QVDeflate.h>

#include "codec/QVDeflateImpl.h"
#include "runtime/Guard.h"

using qv::CreateObject;
using qv::With;

void* QVDeflateCreate() noexcept {
    return CreateObject<QVDeflateImpl>();
}

int QVDeflateEncode(void* encoder, void* destination, void* source) noexcept {
    // One stream cannot be both: it would read what it has just written.
    if (encoder == nullptr || destination == nullptr || source == nullptr || destination == source)
        return QVErrParam;
    return With<QVDeflateImpl>(encoder, int{QVErrMemory},
                               [=](QVDeflateImpl& e) { return e.Encode(destination, source); });
}
