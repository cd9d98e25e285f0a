// The text of one log line: prefix, message, second formatting pass. Works in fixed buffers, so that out of
// memory can be logged.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <ctime>

namespace qv {

// Enough for six fields of any int and the punctuation; the defined prefix has at most 30 characters in
// ordinary years.
inline constexpr std::size_t kLogPrefixMax = 96;
// A message is formatted into 512 characters, the last of them the terminator.
inline constexpr std::size_t kLogMessageMax = 512;
inline constexpr std::size_t kLogLineMax = kLogPrefixMax + kLogMessageMax + 1;

// Writes "YY/MM/DD hh:mm:ss[n] " and answers its length. The year is less 2000 and the month counts from 0:
// both are part of the line's form.
std::size_t WriteLogPrefix(wchar_t* out, const std::tm& time, int sequence) noexcept;

// Formats the message and answers its length; what does not fit is cut. A message that cannot be formatted
// ends where formatting failed.
std::size_t FormatLogMessage(wchar_t (&out)[kLogMessageMax], const wchar_t* format,
                             std::va_list arguments) noexcept;

// The second formatting pass, in place: "%%" becomes "%", any other percent sign stays and reads no argument.
// Answers the new length.
std::size_t FoldPercentSigns(wchar_t* text, std::size_t length) noexcept;

}  // namespace qv
