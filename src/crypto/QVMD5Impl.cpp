#include "crypto/QVMD5Impl.h"

#include <QVFoundation/QVObject.h>

std::uint16_t QVMD5Impl::GetTypeID() const {
    return QVTypeIDMD5;
}
