// The null object: stands for the absence of a value where a collection needs an object.
#pragma once

#include "runtime/QVCBase.h"

class QVNullImpl final : public QVCBase {
public:
    [[nodiscard]] std::uint16_t GetTypeID() const override;
};
