/*
 * Dates: calendar components with the summer-time flag, the time zone's abbreviation and the offset from UTC
 * that went with them when the date was filled.
 *
 * A date stands for an instant: its components read as local time in the zone of the process, with the stored
 * summer-time flag taken at its word. The stored offset, weekday and day of the year take no part in it.
 * Dates are made by the three functions that say so, always as temporary objects (QVTemporaryObjectsPool.h).
 *
 *     void* date = QVDateNow();                         // temporary
 *     QVDateSetMonthOfYear(date, QVDateGetMonthOfYear(date) + 1);
 *     QVDateAdjustComponents(date);                     // December + 1 is January of the next year
 *     void* text = QVDateGetStringWithFormat(date, QVSTR(L"%Y-%m-%d"));
 */
#ifndef QVFOUNDATION_QVDATE_H
#define QVFOUNDATION_QVDATE_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

typedef void* QVDateRef;

/** The current local time as a temporary date; null when memory runs out. */
QV_EXPORT void* QVDateNow(void) QV_NOTHROW;

/** Seconds, 0 to 60 after filling; otherwise as set. */
QV_EXPORT int QVDateGetSeconds(void* date) QV_NOTHROW;
/** Minutes, 0 to 59 after filling; otherwise as set. */
QV_EXPORT int QVDateGetMinutes(void* date) QV_NOTHROW;
/** Hour, 0 to 23 after filling; otherwise as set. */
QV_EXPORT int QVDateGetHour(void* date) QV_NOTHROW;
/** Day of the month, 1 to 31 after filling; otherwise as set. */
QV_EXPORT int QVDateGetDayOfMonth(void* date) QV_NOTHROW;
/** Month, 1 to 12 after filling; otherwise as set. */
QV_EXPORT int QVDateGetMonthOfYear(void* date) QV_NOTHROW;
/** The full year, such as 2026. */
QV_EXPORT int QVDateGetYear(void* date) QV_NOTHROW;
/** Weekday, 0 (Sunday) to 6, as last filled: setters do not change it. */
QV_EXPORT int QVDateGetDayOfWeek(void* date) QV_NOTHROW;
/** Day of the year, from 0, as last filled: setters do not change it. */
QV_EXPORT int QVDateGetDayOfYear(void* date) QV_NOTHROW;
/** Whether summer time was in force, as last filled. */
QV_EXPORT QVBoolean QVDateIsSummerTime(void* date) QV_NOTHROW;
/** The time zone's abbreviation as a string, borrowed; null is possible. It is replaced when the date is
 * filled anew. */
QV_EXPORT void* QVDateGetTimeZone(void* date) QV_NOTHROW;
/** Seconds east of UTC, as last filled or set. */
QV_EXPORT long QVDateGetOffsetFromUTC(void* date) QV_NOTHROW;

/**
 * The setters store the value as it is given: no range check, no normalisation, and no other component
 * changes until QVDateAdjustComponents.
 */
QV_EXPORT void QVDateSetSeconds(void* date, int seconds) QV_NOTHROW;
/** Stores the minutes as given. */
QV_EXPORT void QVDateSetMinutes(void* date, int minutes) QV_NOTHROW;
/** Stores the hour as given. */
QV_EXPORT void QVDateSetHour(void* date, int hour) QV_NOTHROW;
/** Stores the day of the month as given. */
QV_EXPORT void QVDateSetDayOfMonth(void* date, int dayOfMonth) QV_NOTHROW;
/** Stores the month as given, 1 for January. */
QV_EXPORT void QVDateSetMonthOfYear(void* date, int monthOfYear) QV_NOTHROW;
/** Stores the full year as given. */
QV_EXPORT void QVDateSetYear(void* date, int year) QV_NOTHROW;
/** Stores the offset, in seconds east of UTC. It does not move the instant, and adjusting the date overwrites
 * it. */
QV_EXPORT void QVDateSetOffsetFromUTC(void* date, int seconds) QV_NOTHROW;

/**
 * Brings the components into their ranges and recomputes weekday, day of the year, summer time, zone and
 * offset: month 13 becomes January of the next year, day 0 the last day of the month before. A date that the
 * C library cannot represent (a year beyond its range) stays as it is.
 */
QV_EXPORT void QVDateAdjustComponents(void* date) QV_NOTHROW;

/** Orders two dates by their instants: -1 when a is earlier, 0 when they are equal, 1 when a is later. */
QV_EXPORT int QVDateCompare(void* a, void* b) QV_NOTHROW;

/** Seconds from b to a: positive when a is later. 0 when either is null. */
QV_EXPORT double QVDateDiff(void* a, void* b) QV_NOTHROW;

/** The same instant in UTC as a temporary date; null when it cannot be represented or memory runs out. */
QV_EXPORT void* QVDateGetUTCDateTime(void* date) QV_NOTHROW;

/** The same instant in local time as a temporary date; null when it cannot be represented or memory runs out.
 */
QV_EXPORT void* QVDateGetLocalDateTime(void* date) QV_NOTHROW;

/**
 * The instant, in local time, formatted by the conversions of the C library's wcsftime in the caller's
 * locale. The result is a temporary string that is shared with equal texts of the pool (QVSTR) and must not
 * be changed.
 *
 * The text may have at most twice as many characters as the format: a longer one gives an empty string, as
 * does an instant that cannot be represented. Null when memory runs out. A null format is an empty one.
 */
QV_EXPORT void* QVDateGetStringWithFormat(void* date, void* format) QV_NOTHROW;

QV_END_DECLS

#endif
