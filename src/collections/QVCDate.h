// A date: calendar components and what described them when they were filled.
#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>

#include "runtime/Owned.h"
#include "runtime/QVCBase.h"

class QVCDate final : public QVCBase {
public:
    // Fills itself from the current local time. Throws std::bad_alloc.
    QVCDate();

    [[nodiscard]] std::uint16_t GetTypeID() const override;

    // The calendar components proper, in the order of the fields.
    struct Components {
        std::int32_t seconds;
        std::int32_t minutes;
        std::int32_t hour;
        std::int32_t dayOfMonth;
        std::int32_t monthOfYear;
        std::int32_t year;
        std::int32_t dayOfWeek;
        std::int32_t dayOfYear;
        bool summerTime;
    };
    [[nodiscard]] const Components& GetComponents() const { return components_; }
    [[nodiscard]] Components& GetComponents() { return components_; }
    [[nodiscard]] void* GetTimeZone() const { return timeZone_.Get(); }
    [[nodiscard]] std::int32_t GetOffsetFromUTC() const { return offsetFromUTC_; }
    void SetOffsetFromUTC(std::int32_t seconds) { offsetFromUTC_ = seconds; }

    // Copies the C library's fields. False, changing nothing, when the year does not fit. Throws
    // std::bad_alloc.
    bool SetLocalTime(const std::tm& time);
    // Whose word on summer time counts when components become an instant: the date's own, or the C library's
    // choice.
    enum class SummerTime { kAsStored, kChosen };
    // The instant, or nothing when the C library cannot represent it.
    [[nodiscard]] std::optional<std::time_t> GetInstant(SummerTime summerTime = SummerTime::kAsStored) const;
    // The instant as the C library's mktime answers it: -1 stands for one it cannot represent as well.
    [[nodiscard]] std::time_t GetTime() const { return GetInstant().value_or(-1); }

    void AdjustComponents(SummerTime summerTime = SummerTime::kAsStored);
    // New dates for the same instant, or null when it cannot be represented. Throw std::bad_alloc.
    [[nodiscard]] void* CreateUTCDateTime() const;
    [[nodiscard]] void* CreateLocalDateTime() const;
    // The formatted text, empty when it is longer than twice the format or the instant cannot be represented.
    [[nodiscard]] std::wstring FormatWith(const wchar_t* format, std::size_t formatLength) const;

private:
    Components components_ = {};
    qv::Owned timeZone_;
    std::int32_t offsetFromUTC_ = 0;
};
