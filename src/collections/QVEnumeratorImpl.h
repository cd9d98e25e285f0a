// What every enumerator answers, whatever it walks.
#pragma once

#include "runtime/QVCBase.h"

class QVEnumeratorImpl : public QVCBase {
public:
    // The next element, borrowed, or null at the end.
    virtual void* NextObject() noexcept = 0;
    // Back to the first element.
    virtual void Reset() noexcept = 0;
};
