#include <QVFoundation/QVPlist.h>

#include "formats/QVCPlist.h"
#include "runtime/Guard.h"

void* QVPlistCreateData(void* root) noexcept {
    return qv::Guard<void*>(nullptr, [root] {
        QVCPlist writer;
        return writer.CreatePlistData(root).Detach();
    });
}
