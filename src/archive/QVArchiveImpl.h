// An archive being written: its file, the numbering of its items, and the rules by which they are laid down.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>

#include "archive/archive_layout.h"
#include "runtime/Owned.h"
#include "runtime/QVCBase.h"

class QVArchiveImpl final : public QVCBase {
public:
    QVArchiveImpl();
    ~QVArchiveImpl() override;

    [[nodiscard]] std::uint16_t GetTypeID() const override;

    // Starts a new archive file; an archive that was open is closed.
    int NewArchive(void* path, void* options);
    void Close();

    int MakeRootDirectory(unsigned long capacity);
    int AddFile(void* path, unsigned int* itemID);
    int AddItemIntoDirectory(std::uint32_t directoryID, void* itemIDs);

    // Where the item begins; 0 when there is none. The stream keeps its place.
    [[nodiscard]] std::uint64_t FindItem(std::uint32_t itemID);

    // Makes the item's body longer (by zeros at its end) or shorter, moving what lies behind it. The stream
    // keeps its place.
    int ResizeItemBody(std::uint64_t itemPosition, std::uint64_t newLength);

private:
    class Appending;
    class PlaceKeeper;

    [[nodiscard]] void* Stream() const { return archiveStream_.Get(); }
    int StartFile();
    int PutArchiveHeader();

    [[nodiscard]] bool IsOptionSet(const wchar_t* key) const;
    [[nodiscard]] bool IsCompressed() const;
    [[nodiscard]] bool IsEncrypted() const;

    [[nodiscard]] qv::Owned MakeAttributeDataForFile(void* path);
    int CompressFile(void* source, qv::Owned& compressed);
    [[nodiscard]] qv::Owned EncryptFile(qv::Owned file);
    [[nodiscard]] qv::Owned EncryptData(qv::Owned data);

    int AppendFileItem(void* file, void* attributes, std::uint32_t& itemID);
    int CopyFileIntoBody(void* file, std::uint64_t size);

    int PutItemHeader(const QVArchiveItemHeader& header);
    int RewriteItemHeader(std::uint64_t itemPosition, const QVArchiveItemHeader& header,
                          std::uint64_t growth);
    int GetItemHeader(QVArchiveItemHeader& header);
    // Reads the header at a position and refuses an item that does not lie whole in the file.
    int GetWholeItemHeader(std::uint64_t position, QVArchiveItemHeader& header);

    int PutData(void* data);
    int PutZeros(std::uint64_t size, std::size_t pieceSize);
    int CopyStream(void* source, void* destination, std::size_t& lastRead);
    [[nodiscard]] unsigned char* CopyBuffer();

    qv::Owned archivePath_;
    qv::Owned archiveStream_;
    qv::Owned archiveFile_;
    qv::Owned options_;
    std::uint64_t nextItemID_ = qv::kFirstItemID;
    std::uint64_t firstItemPosition_ = 0;
    std::set<std::uint32_t> usedIDs_;
    std::uint64_t archiveCode_;

    std::unique_ptr<unsigned char[]> copyBuffer_;  // made when first needed, kept while the archive is open
};
