#include "collections/QVCDate.h"

#include <cwchar>
#include <limits>
#include <memory>
#include <time.h>

#include <QVFoundation/QVObject.h>
#include <QVFoundation/QVString.h>

#include "runtime/Handle.h"

namespace {

constexpr int kFirstYear = 1900;  // what the C library counts years from

// localtime_r need not look at a changed TZ; localtime does, and dates promise its results.
std::optional<std::tm> LocalTime(std::time_t instant) {
    tzset();
    std::tm fields = {};
    if (localtime_r(&instant, &fields) == nullptr) return std::nullopt;
    return fields;
}

std::optional<std::tm> UTCTime(std::time_t instant) {
    std::tm fields = {};
    if (gmtime_r(&instant, &fields) == nullptr) return std::nullopt;
    return fields;
}

void* CreateFilledWith(const std::optional<std::tm>& fields) {
    if (!fields) return nullptr;
    auto date = std::make_unique<QVCDate>();
    if (!date->SetLocalTime(*fields)) return nullptr;
    return qv::ToHandle(date.release());
}

}  // namespace

QVCDate::QVCDate() {
    const std::optional<std::tm> now = LocalTime(std::time(nullptr));
    if (now) SetLocalTime(*now);
}

std::uint16_t QVCDate::GetTypeID() const {
    return QVTypeIDDate;
}

bool QVCDate::SetLocalTime(const std::tm& time) {
    if (time.tm_year > std::numeric_limits<std::int32_t>::max() - kFirstYear) return false;
    qv::Owned timeZone{qv::RequireObject(QVStringCreateWithCString(time.tm_zone))};
    components_ = {time.tm_sec,  time.tm_min,     time.tm_hour,
                   time.tm_mday, time.tm_mon + 1, time.tm_year + kFirstYear,
                   time.tm_wday, time.tm_yday,    time.tm_isdst > 0};
    timeZone_ = std::move(timeZone);
    offsetFromUTC_ = static_cast<std::int32_t>(time.tm_gmtoff);
    return true;
}

std::optional<std::time_t> QVCDate::GetInstant(SummerTime summerTime) const {
    const std::int64_t year = std::int64_t{components_.year} - kFirstYear;
    const std::int64_t month = std::int64_t{components_.monthOfYear} - 1;
    if (year < std::numeric_limits<int>::min() || month < std::numeric_limits<int>::min())
        return std::nullopt;

    std::tm fields = {};
    fields.tm_sec = components_.seconds;
    fields.tm_min = components_.minutes;
    fields.tm_hour = components_.hour;
    fields.tm_mday = components_.dayOfMonth;
    fields.tm_mon = static_cast<int>(month);
    fields.tm_year = static_cast<int>(year);
    fields.tm_isdst = summerTime == SummerTime::kChosen ? -1 : components_.summerTime;
    // The last second of 1969 is -1 as failure is; only success sets the weekday.
    fields.tm_wday = -1;
    const std::time_t instant = std::mktime(&fields);
    if (instant == -1 && fields.tm_wday == -1) return std::nullopt;
    return instant;
}

void QVCDate::AdjustComponents(SummerTime summerTime) {
    const std::optional<std::time_t> instant = GetInstant(summerTime);
    if (!instant) return;
    const std::optional<std::tm> fields = LocalTime(*instant);
    if (fields) SetLocalTime(*fields);
}

void* QVCDate::CreateUTCDateTime() const {
    const std::optional<std::time_t> instant = GetInstant();
    return instant ? CreateFilledWith(UTCTime(*instant)) : nullptr;
}

void* QVCDate::CreateLocalDateTime() const {
    const std::optional<std::time_t> instant = GetInstant();
    return instant ? CreateFilledWith(LocalTime(*instant)) : nullptr;
}

std::wstring QVCDate::FormatWith(const wchar_t* format, std::size_t formatLength) const {
    const std::optional<std::time_t> instant = GetInstant();
    const std::optional<std::tm> fields = instant ? LocalTime(*instant) : std::nullopt;
    if (!fields) return {};
    // Room for twice the format and the terminator: the limit is part of the function's contract.
    std::wstring text(2 * formatLength + 1, L'\0');
    text.resize(std::wcsftime(text.data(), text.size(), format, &*fields));
    return text;
}
