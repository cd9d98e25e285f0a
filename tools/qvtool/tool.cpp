#include "tool.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>

namespace tool {

namespace {

// Every control character, and the backslash if asked, as a backslash and three octal digits.
std::string Escaped(const std::string& text, bool backslashToo) {
    std::string escaped;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F || (byte == '\\' && backslashToo)) {
            char escape[5];
            std::snprintf(escape, sizeof escape, "\\%03o", byte);
            escaped += escape;
        } else {
            escaped += c;
        }
    }
    return escaped;
}

}  // namespace

void TellError(const std::string& message) {
    std::fprintf(stderr, "qvtool: %s\n", Escaped(message, false).c_str());
}

void ErrorCount::Finish(const std::string& one, const std::string& many, const std::string& what) const {
    if (count_ > 0) throw Failure(Grouped(count_) + " " + (count_ == 1 ? one : many) + " " + what);
}

std::string OneLine(const std::string& name) {
    return Escaped(name, true);
}

Object PathText(const std::string& path) {
    Object text(QVStringCreateWithCString(path.c_str()));
    if (!path.empty() && QVStringGetLength(text.Get()) == 0) {
        throw Failure(path + ": the name is not UTF-8 text");
    }
    return text;
}

std::string ResultText(int code) {
    const char* text = "unknown result";
    switch (code) {
        case QVNoErr:
            text = "success";
            break;
        case QVErrNotFound:
            text = "not found";
            break;
        case QVErrParam:
            text = "bad argument";
            break;
        case QVErrMemory:
            text = "out of memory";
            break;
        case QVErrFormat:
            text = "malformed data";
            break;
        case QVErrSyntax:
            text = "syntax error";
            break;
        case QVErrFileNotFound:
            text = "no such file or directory";
            break;
        case QVErrIO:
            text = "input/output error";
            break;
        case QVErrDuplicate:
            text = "exists already";
            break;
        case QVErrPermission:
            text = "access refused";
            break;
        case QVErrBusy:
            text = "the file is open";
            break;
        case QVErrEOF:
            text = "unexpected end of file";
            break;
        case QVErrHashMismatch:
            text = "the fingerprint does not match the contents";
            break;
        case QVErrBitsShort:
            text = "too few bits";
            break;
        case QVErrWriteShort:
            text = "short write";
            break;
        case QVErrReadShort:
            text = "short read";
            break;
        case QVErrDirectoryFull:
            text = "no item number left";
            break;
        case QVErrEndOfObjects:
            text = "no more objects";
            break;
        default:
            break;
    }
    return std::string(text) + " (" + std::to_string(code) + ")";
}

void Require(int code, const std::string& what) {
    if (code != QVNoErr) {
        throw Failure(what + ": " + ResultText(code));
    }
}

std::string SystemText(const std::string& what) {
    return what + ": " + std::strerror(errno);
}

std::size_t MemorySize(std::uint64_t size) {
    if (size > std::numeric_limits<std::size_t>::max()) throw Failure("too large for this machine's memory");
    return static_cast<std::size_t>(size);
}

std::string Grouped(std::uint64_t number) {
    std::string digits = std::to_string(number);
    for (std::size_t place = digits.size(); place > 3;) {
        place -= 3;
        digits.insert(place, ",");
    }
    return digits;
}

double Rate(std::uint64_t bytes, double seconds) {
    return seconds > 0 ? static_cast<double>(bytes) / 1e6 / seconds : 0;
}

}  // namespace tool
