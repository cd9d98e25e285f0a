#include "archive/QVArchiveImpl.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVData.h>
#include <QVFoundation/QVDeflate.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVEncoding.h>
#include <QVFoundation/QVFile.h>
#include <QVFoundation/QVNumber.h>
#include <QVFoundation/QVObject.h>
#include <QVFoundation/QVStream.h>
#include <QVFoundation/QVString.h>

#include "archive/item_ids.h"
#include "platform/file_system.h"
#include "runtime/random_code.h"

using qv::Owned;

namespace {

enum Origin { kFromStart = 0, kFromEnd = 1 };

constexpr QVBoolean kExact = 1;
constexpr QVBoolean kShortIsFine = 0;

// Moves the marker. A stream does not tell whether its file refused, so the marker is asked: nothing may ever
// be written in a place it does not belong to.
int MoveTo(void* stream, std::uint64_t position) {
    QVStreamSetMarker(stream, kFromStart, static_cast<long long>(position));
    return static_cast<std::uint64_t>(QVStreamGetMarker(stream)) == position ? QVNoErr : QVErrIO;
}

// The first failure counts; a later step's result matters only while there was none.
int FirstFailure(int earlier, int later) {
    return earlier != QVNoErr ? earlier : later;
}

bool IsOfType(void* object, unsigned short typeID) {
    return object != nullptr && QVGetTypeID(object) == typeID;
}

// Whether a regular file stands at the path (a string that resolves), or a link to one. Anything else is
// never deleted for an archive's sake.
bool IsRegularFile(void* path) {
    const qv::LocalPool pool;
    const char* bytes = QVStringGetUTF8String(path);
    qv::ItemInfo info;
    return bytes != nullptr &&
           qv::Files().LookUp(bytes, qv::LinkRule::kFollow, info) == qv::FileError::kNone &&
           info.kind == qv::ItemKind::kRegularFile;
}

// The compressor stops at the size that the stream tells. A source that has grown since, or whose size could
// not be told (which reads as 0), must not pass for compressed.
int RequireEnd(void* stream) {
    unsigned char next = 0;
    unsigned long done = 0;
    const int result = QVStreamGetBytes(stream, &next, 1, &done, kShortIsFine);
    return FirstFailure(result, done == 0 ? QVNoErr : QVErrIO);
}

// The IDs that an array of numbers holds; false when an element is something else.
bool ReadItemIDs(void* array, std::vector<std::uint32_t>& itemIDs) {
    const unsigned long count = QVArrayGetCount(array);
    itemIDs.reserve(count);
    for (unsigned long i = 0; i < count; ++i) {
        void* number = QVArrayGetObjectAtIndex(array, i);
        if (!IsOfType(number, QVTypeIDNumber)) return false;
        itemIDs.push_back(QVNumberGetUInt32Value(number));
    }
    return true;
}

}  // namespace

// What is being appended at the archive's end: unless it is kept, the archive is cut there again.
class QVArchiveImpl::Appending {
public:
    explicit Appending(QVArchiveImpl& archive)
        : stream_(archive.Stream()), file_(archive.archiveFile_.Get()) {}
    Appending(const Appending&) = delete;
    Appending& operator=(const Appending&) = delete;
    ~Appending() {
        if (!hasStarted_ || isKept_) return;
        // What the flush cannot write belongs to the part that goes.
        QVStreamFlush(stream_);
        QVFileSetSize(file_, start_);
        QVStreamSetMarker(stream_, kFromEnd, 0);
    }

    // Moves to the end.
    int Start() {
        start_ = QVStreamGetSize(stream_);
        const int result = MoveTo(stream_, start_);
        hasStarted_ = result == QVNoErr && start_ > 0;  // a size that cannot be told is given as 0
        return hasStarted_ ? QVNoErr : FirstFailure(result, QVErrIO);
    }
    void Keep() { isKept_ = true; }

private:
    void* stream_;
    void* file_;
    unsigned long long start_ = 0;
    bool hasStarted_ = false;
    bool isKept_ = false;
};

// Puts the stream's marker back where it was.
class QVArchiveImpl::PlaceKeeper {
public:
    explicit PlaceKeeper(void* stream) : stream_(stream), place_(QVStreamGetMarker(stream)) {}
    PlaceKeeper(const PlaceKeeper&) = delete;
    PlaceKeeper& operator=(const PlaceKeeper&) = delete;
    ~PlaceKeeper() { QVStreamSetMarker(stream_, kFromStart, place_); }

private:
    void* stream_;
    long long place_;
};

QVArchiveImpl::QVArchiveImpl() : archiveCode_(qv::RandomCode()) {}

QVArchiveImpl::~QVArchiveImpl() {
    Close();
}

std::uint16_t QVArchiveImpl::GetTypeID() const {
    return QVTypeIDArchive;
}

void QVArchiveImpl::Close() {
    archivePath_.Reset();
    archiveStream_.Reset();
    archiveFile_.Reset();
    options_.Reset();
    nextItemID_ = qv::kFirstItemID;
    firstItemPosition_ = 0;
    usedIDs_.clear();
    copyBuffer_.reset();
}

int QVArchiveImpl::NewArchive(void* path, void* options) {
    if (path == nullptr) return QVErrParam;
    if (options != nullptr && !IsOfType(options, QVTypeIDDictionary)) return QVErrParam;

    // Both may be held by nobody but the archive that is closed now.
    Owned newPath = Owned::Retaining(path);
    Owned newOptions = Owned::Retaining(options);
    Close();
    archivePath_ = std::move(newPath);
    options_ = std::move(newOptions);

    const int result = StartFile();
    if (result != QVNoErr) Close();
    return result;
}

int QVArchiveImpl::StartFile() {
    Owned file(qv::RequireObject(QVFileCreate()));
    if (QVFileSetPath(file.Get(), archivePath_.Get()) == QVNoErr) {
        if (!IsRegularFile(archivePath_.Get())) return QVErrIO;
        QVFileDelete(file.Get(), 0);
    }
    const int opened = QVFileOpenForWriting(file.Get());
    if (opened != QVNoErr) return opened;

    archiveFile_ = std::move(file);
    int result = QVFileSetSize(archiveFile_.Get(), 0);
    archiveStream_.Reset(QVStreamCreateWithFile(archiveFile_.Get()));
    if (!archiveStream_) result = FirstFailure(result, QVErrMemory);
    if (result == QVNoErr) result = PutArchiveHeader();
    if (result != QVNoErr) QVFileDelete(archiveFile_.Get(), 0);
    return result;
}

int QVArchiveImpl::PutArchiveHeader() {
    // The options are the library's generic data form of an object, which is empty in this version.
    const Owned optionsData(QVCreateData(options_.Get()));
    const auto optionsLength = static_cast<std::uint32_t>(QVDataGetSize(optionsData.Get()));

    int result =
        QVStreamPutBytes(Stream(), qv::kArchiveSignature, qv::kArchiveSignatureSize, nullptr, kExact);
    for (const std::uint8_t byte : qv::kArchiveFormat) {
        if (result == QVNoErr) result = QVStreamPutUInt8(Stream(), byte);
    }
    if (result == QVNoErr) result = QVStreamPutUInt32(Stream(), optionsLength);
    if (result == QVNoErr) result = PutData(optionsData.Get());
    if (result == QVNoErr) result = QVStreamPutUInt64(Stream(), archiveCode_);
    firstItemPosition_ = static_cast<std::uint64_t>(QVStreamGetMarker(Stream()));
    return FirstFailure(result, QVStreamFlush(Stream()));
}

int QVArchiveImpl::MakeRootDirectory(unsigned long capacity) {
    if (!archiveStream_) return QVErrFileNotFound;
    constexpr unsigned long kLargestCapacity =
        (std::numeric_limits<unsigned long>::max() - qv::kDirectoryCountSize) / qv::kDirectoryEntrySize;
    if (capacity > kLargestCapacity) return QVErrMemory;
    const std::uint64_t length = qv::DirectoryBodyLength(capacity);
    const Owned body(QVDataCreate(nullptr, static_cast<unsigned long>(length)));
    if (!body) return QVErrMemory;

    Appending item(*this);
    int result = item.Start();
    if (result == QVNoErr) result = PutItemHeader({qv::kRootItemID, qv::kDirectoryItem, 0, length});
    if (result == QVNoErr) result = PutData(body.Get());
    result = FirstFailure(result, QVStreamFlush(Stream()));
    if (result == QVNoErr) item.Keep();
    return result;
}

int QVArchiveImpl::AddFile(void* path, unsigned int* itemID) {
    if (!archiveStream_) return QVErrFileNotFound;
    Owned attributes = MakeAttributeDataForFile(path);
    if (IsEncrypted()) attributes = EncryptData(std::move(attributes));

    Owned file(qv::RequireObject(QVFileCreate()));
    QVFileSetPath(file.Get(), path);  // a path that leads nowhere shows when the file is opened
    if (IsCompressed()) {
        Owned compressed;
        const int result = CompressFile(file.Get(), compressed);
        if (result != QVNoErr) return result;
        file = std::move(compressed);  // a temporary file: it goes with its object
    }
    if (IsEncrypted()) file = EncryptFile(std::move(file));

    std::uint32_t newID = qv::kNoItemID;
    const int result = AppendFileItem(file.Get(), attributes.Get(), newID);
    if (result == QVNoErr && itemID != nullptr) *itemID = newID;
    return result;
}

int QVArchiveImpl::AppendFileItem(void* file, void* attributes, std::uint32_t& itemID) {
    const int opened = QVFileOpenForReading(file);
    if (opened != QVNoErr) return opened;
    itemID = qv::TakeItemID(nextItemID_, usedIDs_);
    if (itemID == qv::kNoItemID) return QVErrDirectoryFull;

    Appending item(*this);
    const std::uint64_t size = QVFileGetSize(file);
    const auto attributeLength = static_cast<std::uint32_t>(QVDataGetSize(attributes));
    int result = item.Start();
    if (result == QVNoErr) result = PutItemHeader({itemID, qv::kFileItem, attributeLength, size});
    if (result == QVNoErr) result = PutData(attributes);
    if (result == QVNoErr) result = CopyFileIntoBody(file, size);
    result = FirstFailure(result, QVStreamFlush(Stream()));
    // A file that is the archive itself has grown by its own item, at the latest with the flush.
    if (result == QVNoErr && QVFileGetSize(file) != size) result = QVErrIO;
    QVFileClose(file);
    if (result == QVNoErr) item.Keep();
    return result;
}

int QVArchiveImpl::CopyFileIntoBody(void* file, std::uint64_t size) {
    unsigned char* buffer = CopyBuffer();
    std::uint64_t copied = 0;
    for (;;) {
        unsigned long done = 0;
        const int read = QVFileReadBytes(file, buffer, qv::kCopyBufferSize, &done, kShortIsFine);
        if (read != QVNoErr && read != QVErrEOF) return read;
        if (done == 0) break;
        // A file that has grown must not run on for ever: it may be the archive itself.
        if (done > size - copied) return QVErrIO;
        const int put = QVStreamPutBytes(Stream(), buffer, done, nullptr, kExact);
        if (put != QVNoErr) return put;
        copied += done;
    }
    return copied == size ? QVNoErr : QVErrIO;
}

Owned QVArchiveImpl::MakeAttributeDataForFile(void* path) {
    const qv::LocalPool pool;
    const Owned attributes(qv::RequireObject(QVDictionaryCreate()));
    void* name = QVStringLastPathComponent(path);
    if (name != nullptr) QVDictionarySetObject(attributes.Get(), name, L"Name");
    return Owned(QVCreateData(attributes.Get()));
}

bool QVArchiveImpl::IsOptionSet(const wchar_t* key) const {
    void* value = QVDictionaryGetObject(options_.Get(), key);
    return IsOfType(value, QVTypeIDNumber) && QVNumberGetBoolValue(value) != 0;
}

bool QVArchiveImpl::IsCompressed() const {
    return IsOptionSet(L"Compress");
}

bool QVArchiveImpl::IsEncrypted() const {
    return IsOptionSet(L"Encrypt");
}

// The temporary file stands next to the source, goes with its object, and is written once and read once.
int QVArchiveImpl::CompressFile(void* source, Owned& compressed) {
    Owned target(QVFileCreateTemporary(QVFileGetPath(source)));
    if (!target) return QVErrPermission;
    int result = QVFileOpenForReading(source);
    if (result == QVNoErr) result = QVFileOpenForWriting(target.Get());
    if (result != QVNoErr) return result;
    const Owned from(qv::RequireObject(QVStreamCreateWithFile(source)));
    const Owned to(qv::RequireObject(QVStreamCreateWithFile(target.Get())));
    const Owned encoder(qv::RequireObject(QVDeflateCreate()));
    result = QVDeflateEncode(encoder.Get(), to.Get(), from.Get());
    if (result == QVNoErr) result = RequireEnd(from.Get());
    if (result == QVNoErr) compressed = std::move(target);
    return result;
}

// Encryption is reserved: these two steps have their place in the order of things and hand back what they
// get.
Owned QVArchiveImpl::EncryptFile(Owned file) {
    return file;
}

Owned QVArchiveImpl::EncryptData(Owned data) {
    return data;
}

int QVArchiveImpl::PutItemHeader(const QVArchiveItemHeader& header) {
    int result = QVStreamPutUInt32(Stream(), header.itemID);
    if (result == QVNoErr) result = QVStreamPutUInt16(Stream(), header.itemType);
    if (result == QVNoErr) result = QVStreamPutUInt32(Stream(), header.attributeLength);
    if (result == QVNoErr) result = QVStreamPutUInt64(Stream(), header.bodyLength);
    if (result == QVNoErr) usedIDs_.insert(header.itemID);
    return result;
}

int QVArchiveImpl::GetItemHeader(QVArchiveItemHeader& header) {
    unsigned int itemID = 0;
    unsigned short itemType = 0;
    unsigned int attributeLength = 0;
    unsigned long long bodyLength = 0;
    int result = QVStreamGetUInt32(Stream(), &itemID);
    if (result == QVNoErr) result = QVStreamGetUInt16(Stream(), &itemType);
    if (result == QVNoErr) result = QVStreamGetUInt32(Stream(), &attributeLength);
    if (result == QVNoErr) result = QVStreamGetUInt64(Stream(), &bodyLength);
    if (result == QVNoErr) header = {itemID, itemType, attributeLength, bodyLength};
    return result;
}

int QVArchiveImpl::GetWholeItemHeader(std::uint64_t position, QVArchiveItemHeader& header) {
    int result = MoveTo(Stream(), position);
    if (result == QVNoErr) result = GetItemHeader(header);
    if (result != QVNoErr) return result;
    return qv::LiesInFile(position, header, QVStreamGetSize(Stream())) ? QVNoErr : QVErrFormat;
}

std::uint64_t QVArchiveImpl::FindItem(std::uint32_t itemID) {
    if (!archiveStream_) return 0;
    const PlaceKeeper keeper(Stream());
    const std::uint64_t fileSize = QVStreamGetSize(Stream());
    std::uint64_t position = firstItemPosition_;
    for (;;) {
        QVArchiveItemHeader header;
        if (MoveTo(Stream(), position) != QVNoErr || GetItemHeader(header) != QVNoErr) return 0;
        if (header.itemID == itemID) return position;
        // The lengths come from the file: only a step forward that stays inside it leads on.
        if (!qv::LiesInFile(position, header, fileSize)) return 0;
        position = qv::NextItemPosition(position, header);
    }
}

int QVArchiveImpl::AddItemIntoDirectory(std::uint32_t directoryID, void* itemIDs) {
    if (!archiveStream_) return QVErrFileNotFound;
    if (!IsOfType(itemIDs, QVTypeIDArray)) return QVErrParam;
    const std::uint64_t position = FindItem(directoryID);
    if (position == 0) return QVNoErr;  // deliberately no error

    QVArchiveItemHeader header;
    int result = GetWholeItemHeader(position, header);
    if (result != QVNoErr) return result;
    if (header.itemType != qv::kDirectoryItem) return QVNoErr;
    if (header.bodyLength < qv::kDirectoryCountSize) return QVErrFormat;

    const std::uint64_t countPosition = qv::BodyPosition(position, header);
    unsigned int count = 0;
    result = MoveTo(Stream(), countPosition);
    if (result == QVNoErr) result = QVStreamGetUInt32(Stream(), &count);
    if (result != QVNoErr) return result;
    if (QVArrayGetCount(itemIDs) > std::numeric_limits<std::uint32_t>::max() - count)
        return QVErrDirectoryFull;
    std::vector<std::uint32_t> newIDs;
    if (!ReadItemIDs(itemIDs, newIDs)) return QVErrParam;

    // The count is written before the room is made: a growth that fails leaves it so.
    const auto newCount = static_cast<std::uint32_t>(count + newIDs.size());
    result = MoveTo(Stream(), countPosition);
    if (result == QVNoErr) result = QVStreamPutUInt32(Stream(), newCount);
    const std::uint64_t needed = qv::DirectoryBodyLength(newCount);
    if (result == QVNoErr && header.bodyLength < needed)
        result = ResizeItemBody(position, qv::GrownBodyLength(needed));
    if (result == QVNoErr) result = MoveTo(Stream(), countPosition + qv::DirectoryBodyLength(count));
    for (std::size_t i = 0; i < newIDs.size() && result == QVNoErr; ++i) {
        result = QVStreamPutUInt32(Stream(), newIDs[i]);
    }
    return FirstFailure(result, QVStreamFlush(Stream()));
}

int QVArchiveImpl::ResizeItemBody(std::uint64_t itemPosition, std::uint64_t newLength) {
    if (!archiveStream_) return QVErrFileNotFound;
    const PlaceKeeper keeper(Stream());
    QVArchiveItemHeader header;
    int result = GetWholeItemHeader(itemPosition, header);
    if (result != QVNoErr || newLength == header.bodyLength) return result;

    const Owned tailFile(QVFileCreateTemporary(archivePath_.Get()));
    if (!tailFile) return QVErrPermission;
    result = QVFileOpenForWriting(tailFile.Get());
    if (result != QVNoErr) return result;
    const Owned tail(qv::RequireObject(QVStreamCreateWithFile(tailFile.Get())));

    const std::uint64_t oldEnd = qv::NextItemPosition(itemPosition, header);
    const std::uint64_t growth = newLength > header.bodyLength ? newLength - header.bodyLength : 0;
    const bool shrinks = newLength < header.bodyLength;
    header.bodyLength = newLength;

    std::size_t lastRead = 0;
    result = MoveTo(Stream(), oldEnd);
    if (result == QVNoErr) result = CopyStream(Stream(), tail.Get(), lastRead);
    if (result == QVNoErr) result = RewriteItemHeader(itemPosition, header, growth);
    if (result == QVNoErr && growth > 0) {
        // The room is filled in pieces as large as the last one read. The copy ended with a read of 0 bytes,
        // which says nothing: then the buffer's size is the limit.
        result = MoveTo(Stream(), oldEnd);
        if (result == QVNoErr) result = PutZeros(growth, lastRead != 0 ? lastRead : qv::kCopyBufferSize);
    }
    if (result == QVNoErr) result = MoveTo(Stream(), qv::NextItemPosition(itemPosition, header));
    if (result == QVNoErr) result = MoveTo(tail.Get(), 0);
    if (result == QVNoErr) result = CopyStream(tail.Get(), Stream(), lastRead);
    if (result == QVNoErr && shrinks) {
        result =
            QVFileSetSize(archiveFile_.Get(), static_cast<unsigned long long>(QVStreamGetMarker(Stream())));
    }
    return result;
}

// The room for the growth is taken at the archive's end first, so that a full disk shows while everything is
// still in its place.
int QVArchiveImpl::RewriteItemHeader(std::uint64_t itemPosition, const QVArchiveItemHeader& header,
                                     std::uint64_t growth) {
    Appending room(*this);
    int result = room.Start();
    if (result == QVNoErr) result = PutZeros(growth, qv::kCopyBufferSize);
    if (result == QVNoErr) result = QVStreamFlush(Stream());
    if (result == QVNoErr) result = MoveTo(Stream(), itemPosition);
    if (result == QVNoErr) result = PutItemHeader(header);
    if (result == QVNoErr) result = QVStreamFlush(Stream());
    if (result == QVNoErr) room.Keep();
    return result;
}

// Copies from the source's marker to its end and flushes the destination, so that old bytes that stood behind
// the marker in its buffer are not written later.
int QVArchiveImpl::CopyStream(void* source, void* destination, std::size_t& lastRead) {
    unsigned char* buffer = CopyBuffer();
    int result = QVNoErr;
    do {
        unsigned long done = 0;
        result = QVStreamGetBytes(source, buffer, qv::kCopyBufferSize, &done, kShortIsFine);
        lastRead = done;
        if (result == QVNoErr && done > 0)
            result = QVStreamPutBytes(destination, buffer, done, nullptr, kExact);
    } while (result == QVNoErr && lastRead > 0);
    return FirstFailure(result, QVStreamFlush(destination));
}

int QVArchiveImpl::PutData(void* data) {
    const unsigned long size = QVDataGetSize(data);  // no Data is empty Data
    if (size == 0) return QVNoErr;
    return QVStreamPutBytes(Stream(), QVDataGetImutableBuffer(data), size, nullptr, kExact);
}

int QVArchiveImpl::PutZeros(std::uint64_t size, std::size_t pieceSize) {
    unsigned char* buffer = CopyBuffer();
    pieceSize = static_cast<std::size_t>(std::min<std::uint64_t>({pieceSize, qv::kCopyBufferSize, size}));
    std::fill_n(buffer, pieceSize, static_cast<unsigned char>(0));
    while (size > 0) {
        const auto piece = static_cast<unsigned long>(std::min<std::uint64_t>(pieceSize, size));
        const int result = QVStreamPutBytes(Stream(), buffer, piece, nullptr, kExact);
        if (result != QVNoErr) return result;
        size -= piece;
    }
    return QVNoErr;
}

unsigned char* QVArchiveImpl::CopyBuffer() {
    if (!copyBuffer_) copyBuffer_.reset(new unsigned char[qv::kCopyBufferSize]);
    return copyBuffer_.get();
}
