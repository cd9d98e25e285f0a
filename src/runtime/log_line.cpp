#include "runtime/log_line.h"

#include <cwchar>

namespace qv {
namespace {

wchar_t* WriteNumber(wchar_t* out, int number, int leastDigits) noexcept {
    unsigned value = static_cast<unsigned>(number);
    if (number < 0) {
        *out++ = L'-';
        value = 0U - value;
        --leastDigits;
    }
    wchar_t digits[10];
    int count = 0;
    do {
        digits[count++] = static_cast<wchar_t>(L'0' + value % 10);
        value /= 10;
    } while (value != 0);
    for (int pad = count; pad < leastDigits; ++pad)
        *out++ = L'0';
    while (count > 0)
        *out++ = digits[--count];
    return out;
}

}  // namespace

std::size_t WriteLogPrefix(wchar_t* out, const std::tm& time, int sequence) noexcept {
    struct Field {
        int value;
        wchar_t end;
    };
    const Field fields[] = {{time.tm_year - 100, L'/'}, {time.tm_mon, L'/'}, {time.tm_mday, L' '},
                            {time.tm_hour, L':'},       {time.tm_min, L':'}, {time.tm_sec, L'['}};
    wchar_t* end = out;
    for (const Field& field : fields) {
        end = WriteNumber(end, field.value, 2);
        *end++ = field.end;
    }
    end = WriteNumber(end, sequence, 1);
    *end++ = L']';
    *end++ = L' ';
    return static_cast<std::size_t>(end - out);
}

std::size_t FormatLogMessage(wchar_t (&out)[kLogMessageMax], const wchar_t* format,
                             std::va_list arguments) noexcept {
    out[0] = L'\0';
    const int written = std::vswprintf(out, kLogMessageMax, format, arguments);
    if (written >= 0) return static_cast<std::size_t>(written);
    // The C library leaves what it formatted until then, ended by a 0 or by the buffer's end.
    out[kLogMessageMax - 1] = L'\0';
    return std::wcslen(out);
}

std::size_t FoldPercentSigns(wchar_t* text, std::size_t length) noexcept {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < length; ++i) {
        text[kept++] = text[i];
        if (text[i] == L'%' && i + 1 < length && text[i + 1] == L'%') ++i;
    }
    return kept;
}

}  // namespace qv
