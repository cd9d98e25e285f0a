#include <QVFoundation/QVDate.h>
#include <QVFoundation/QVString.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>

#include "collections/QVCDate.h"
#include "collections/date_components.h"
#include "runtime/Guard.h"

using qv::With;

namespace {

using Components = QVCDate::Components;

int GetField(void* date, std::int32_t Components::*field) noexcept {
    return With<QVCDate>(date, 0, [field](const QVCDate& d) { return d.GetComponents().*field; });
}

void SetField(void* date, std::int32_t Components::*field, int value) noexcept {
    With<QVCDate>(date, [=](QVCDate& d) { d.GetComponents().*field = value; });
}

}  // namespace

void* QVDateNow() noexcept {
    return QVTEMPOBJ(qv::CreateObject<QVCDate>());
}

int QVDateGetSeconds(void* date) noexcept {
    return GetField(date, &Components::seconds);
}
int QVDateGetMinutes(void* date) noexcept {
    return GetField(date, &Components::minutes);
}
int QVDateGetHour(void* date) noexcept {
    return GetField(date, &Components::hour);
}
int QVDateGetDayOfMonth(void* date) noexcept {
    return GetField(date, &Components::dayOfMonth);
}
int QVDateGetMonthOfYear(void* date) noexcept {
    return GetField(date, &Components::monthOfYear);
}
int QVDateGetYear(void* date) noexcept {
    return GetField(date, &Components::year);
}
int QVDateGetDayOfWeek(void* date) noexcept {
    return GetField(date, &Components::dayOfWeek);
}
int QVDateGetDayOfYear(void* date) noexcept {
    return GetField(date, &Components::dayOfYear);
}

QVBoolean QVDateIsSummerTime(void* date) noexcept {
    return With<QVCDate>(date, QVBoolean{0}, [](const QVCDate& d) { return d.GetComponents().summerTime; });
}

void* QVDateGetTimeZone(void* date) noexcept {
    return With<QVCDate>(date, static_cast<void*>(nullptr), [](const QVCDate& d) { return d.GetTimeZone(); });
}

long QVDateGetOffsetFromUTC(void* date) noexcept {
    return With<QVCDate>(date, 0L, [](const QVCDate& d) { return d.GetOffsetFromUTC(); });
}

void QVDateSetSeconds(void* date, int seconds) noexcept {
    SetField(date, &Components::seconds, seconds);
}
void QVDateSetMinutes(void* date, int minutes) noexcept {
    SetField(date, &Components::minutes, minutes);
}
void QVDateSetHour(void* date, int hour) noexcept {
    SetField(date, &Components::hour, hour);
}
void QVDateSetDayOfMonth(void* date, int dayOfMonth) noexcept {
    SetField(date, &Components::dayOfMonth, dayOfMonth);
}
void QVDateSetMonthOfYear(void* date, int monthOfYear) noexcept {
    SetField(date, &Components::monthOfYear, monthOfYear);
}
void QVDateSetYear(void* date, int year) noexcept {
    SetField(date, &Components::year, year);
}
void QVDateSetOffsetFromUTC(void* date, int seconds) noexcept {
    With<QVCDate>(date, [seconds](QVCDate& d) { d.SetOffsetFromUTC(seconds); });
}

void QVDateAdjustComponents(void* date) noexcept {
    With<QVCDate>(date, [](QVCDate& d) { d.AdjustComponents(); });
}

int QVDateCompare(void* a, void* b) noexcept {
    if (a == nullptr || b == nullptr) return (a != nullptr) - (b != nullptr);
    const double difference = QVDateDiff(a, b);
    return (difference > 0) - (difference < 0);
}

double QVDateDiff(void* a, void* b) noexcept {
    if (b == nullptr) return 0;
    return With<QVCDate>(a, 0.0, [b](const QVCDate& first) {
        return std::difftime(first.GetTime(), qv::FromHandle<QVCDate>(b)->GetTime());
    });
}

void* QVDateGetUTCDateTime(void* date) noexcept {
    if (date == nullptr) return nullptr;
    return QVTEMPOBJ(With<QVCDate>(date, static_cast<void*>(nullptr),
                                   [](const QVCDate& d) { return d.CreateUTCDateTime(); }));
}

void* QVDateGetLocalDateTime(void* date) noexcept {
    if (date == nullptr) return nullptr;
    return QVTEMPOBJ(With<QVCDate>(date, static_cast<void*>(nullptr),
                                   [](const QVCDate& d) { return d.CreateLocalDateTime(); }));
}

void* QVDateGetStringWithFormat(void* date, void* format) noexcept {
    return With<QVCDate>(date, static_cast<void*>(nullptr), [format](const QVCDate& d) {
        if (format == nullptr) return QVSTR(L"");
        const std::wstring text = d.FormatWith(QVStringGetBuffer(format), QVStringGetLength(format));
        return QVSTR(text.c_str());
    });
}

void* qv::CreateDateWithComponents(const DateComponents& components) noexcept {
    return Guard<void*>(nullptr, [&components] {
        qv::Owned date{qv::ToHandle(new QVCDate)};
        auto* object = qv::FromHandle<QVCDate>(date.Get());
        Components& fields = object->GetComponents();
        fields.year = components.year;
        fields.monthOfYear = components.monthOfYear;
        fields.dayOfMonth = components.dayOfMonth;
        fields.hour = components.hour;
        fields.minutes = components.minutes;
        fields.seconds = components.seconds;
        object->AdjustComponents(QVCDate::SummerTime::kChosen);
        return date.Detach();
    });
}
