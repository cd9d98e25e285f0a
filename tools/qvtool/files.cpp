#include "files.h"

#include <cstdio>

namespace tool {
namespace {

constexpr QVEncodingInfo kUtf8 = {QVEncodingUTF8, 0, 0};

void WriteToStandardOutput(void* data) {
    const unsigned long size = QVDataGetSize(data);
    if (std::fwrite(QVDataGetImutableBuffer(data), 1, size, stdout) != size || std::fflush(stdout) != 0) {
        throw Failure(SystemText("standard output"));
    }
}

// The code of a file that cannot be read; the Data functions only say that it failed.
int OpenCode(const Object& path) {
    const Object file(QVFileCreate());
    QVFileSetPath(file.Get(), path.Get());
    const int code = QVFileOpenForReading(file.Get());
    QVFileClose(file.Get());
    return code == QVNoErr ? static_cast<int>(QVErrIO) : code;
}

}  // namespace

Object ReadData(const std::string& path) {
    const Object pathText = PathText(path);
    void* data = QVDataCreateFromFile(pathText.Get());
    if (data == nullptr) Require(OpenCode(pathText), path);
    return Object(QVRetain(data));
}

Object ReadText(const std::string& path) {
    const Object data = ReadData(path);
    if (QVDataGetSize(data.Get()) == 0) return Object(QVStringCreate());
    void* text = QVStringCreateWithData(data.Get(), kUtf8);
    if (text == nullptr) throw Failure(path + ": not UTF-8 text");
    return Object(text);
}

void WriteData(void* data, const std::string& path) {
    if (path == "-") return WriteToStandardOutput(data);
    const Object pathText = PathText(path);
    // Writing empty Data leaves an older file as it is, so an empty result goes through an empty file.
    if (QVDataGetSize(data) == 0) {
        const Object file(QVFileCreate());
        QVFileSetPath(file.Get(), pathText.Get());
        Require(QVFileOpenForWriting(file.Get()), path);
        Require(QVFileSetSize(file.Get(), 0), path);
        return Require(QVFileClose(file.Get()), path);
    }
    Require(QVDataWriteToFile(data, pathText.Get()), path);
}

void WriteText(void* string, const std::string& path) {
    const Object data(QVStringMakeData(string, kUtf8));
    WriteData(data.Get(), path);
}

}  // namespace tool
