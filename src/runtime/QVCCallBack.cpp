#include "runtime/QVCCallBack.h"

#include <QVFoundation/QVObject.h>

std::uint16_t QVCCallBack::GetTypeID() const {
    return QVTypeIDUnregistered;
}
