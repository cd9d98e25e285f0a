#include <atomic>
#include <cstdarg>
#include <ctime>

#include <QVFoundation/QVLibrary.h>

#include "base/utf8.h"
#include "platform/clock.h"
#include "platform/standard_output.h"
#include "runtime/log_line.h"

namespace {

// Lines of this process so far. Atomic only so that two threads that log at once are no data race.
constinit std::atomic<int> sequenceNumber{0};

}  // namespace

void QVLog(const wchar_t* format, ...) noexcept {
    wchar_t message[qv::kLogMessageMax];
    std::va_list arguments;
    va_start(arguments, format);
    const std::size_t messageLength =
        format == nullptr ? 0 : qv::FormatLogMessage(message, format, arguments);
    va_end(arguments);

    wchar_t line[qv::kLogLineMax];
    const int sequence = sequenceNumber.fetch_add(1, std::memory_order_relaxed);
    std::size_t length = qv::WriteLogPrefix(line, qv::LocalTimeNow(), sequence);
    for (std::size_t i = 0; i < messageLength; ++i)
        line[length + i] = message[i];
    length = qv::FoldPercentSigns(line, length + messageLength);
    line[length++] = L'\n';

    char bytes[qv::Utf8SizeMax(qv::kLogLineMax)];
    qv::WriteToStandardOutput(bytes, qv::EncodeUtf8Lossy(line, length, bytes));
}
