#include "runtime/QVNullImpl.h"

#include <QVFoundation/QVObject.h>

std::uint16_t QVNullImpl::GetTypeID() const {
    return QVTypeIDNull;
}
