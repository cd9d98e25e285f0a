#include "files.h"

#include <filesystem>
#include <vector>

namespace tool {

Object FileAt(const std::string& path) {
    Object file(QVFileCreate());
    const Object text = PathText(path);
    QVFileSetPath(file.Get(), text.Get());
    return file;
}

Object OpenForReading(const std::string& path) {
    Object file = FileAt(path);
    const int code = QVFileOpenForReading(file.Get());
    std::error_code ignored;
    const std::filesystem::file_status status = std::filesystem::status(path, ignored);
    if (code != QVNoErr && std::filesystem::is_directory(status)) throw Failure(path + ": is a directory");
    if (code != QVNoErr && std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        throw Failure(path + ": not a regular file");
    }
    Require(code, path);
    return file;
}

void ReadPieces(const Object& file, const std::string& path, std::size_t pieceSize,
                const PieceReader& reader) {
    std::vector<unsigned char> piece(pieceSize);
    for (;;) {
        unsigned long count = 0;
        const int code = QVFileReadBytes(file.Get(), piece.data(), pieceSize, &count, 0);
        if (code != QVErrEOF) Require(code, path);
        if (count == 0) return;
        reader(piece.data(), count);
    }
}

Object ReadData(const std::string& path) {
    const Object file = OpenForReading(path);
    const Object pathText = PathText(path);
    void* data = QVDataCreateFromFile(pathText.Get());
    if (data == nullptr) throw Failure(path + ": too large for this machine's memory, or it cannot be read");
    return Object(QVRetain(data));
}

Object ReadText(const std::string& path) {
    const Object data = ReadData(path);
    if (QVDataGetSize(data.Get()) == 0) return Object(QVStringCreate());
    constexpr QVEncodingInfo kUtf8 = {QVEncodingUTF8, 0, 0};
    void* text = QVStringCreateWithData(data.Get(), kUtf8);
    if (text == nullptr) throw Failure(path + ": not UTF-8 text");
    return Object(text);
}

}  // namespace tool
