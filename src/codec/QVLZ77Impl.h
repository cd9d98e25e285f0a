// The sliding dictionary as an object.
#pragma once

#include <QVFoundation/QVObject.h>

#include "codec/sliding_window.h"
#include "runtime/QVCBase.h"

class QVLZ77Impl final : public QVCBase {
public:
    [[nodiscard]] std::uint16_t GetTypeID() const override { return QVTypeIDLZSS; }

    void AppendValue(std::uint8_t value) noexcept { window_.Append(value); }
    [[nodiscard]] qv::SlidingWindow::Match SearchSlideDic(const std::uint8_t* lookahead,
                                                          std::size_t size) noexcept {
        return window_.Search(lookahead, size);
    }

private:
    qv::SlidingWindow window_;
};
