// A function's address and a context, carried through interfaces that take only handles.
#pragma once

#include "runtime/QVCBase.h"

class QVCCallBack final : public QVCBase {
public:
    QVCCallBack() noexcept = default;
    QVCCallBack(void* address, void* context) noexcept : address_(address), context_(context) {}

    [[nodiscard]] std::uint16_t GetTypeID() const override;

    [[nodiscard]] void* GetAddress() const { return address_; }
    [[nodiscard]] void* GetContext() const { return context_; }

private:
    void* address_ = nullptr;
    void* context_ = nullptr;
};
