// A file of the platform's file system. The class is named after the first platform it was written for;
// everything that differs between systems lies behind platform/file_system.h.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "io/QVFileImpl.h"
#include "platform/file_system.h"
#include "runtime/Owned.h"

class QVFileMacImpl final : public QVFileImpl {
public:
    QVFileMacImpl() = default;
    // Closes the file, and deletes a temporary file that this object made.
    ~QVFileMacImpl() override;
    [[nodiscard]] std::uint16_t GetTypeID() const override;

    int OpenForReading() override;
    int OpenForWriting() override;
    int Close() override;
    int SetPath(void* path) override;
    [[nodiscard]] void* GetPath() const override { return path_.Get(); }
    int SetMarker(int origin, long long offset) override;
    [[nodiscard]] unsigned long long GetMarker() const override;
    int ReadBytes(void* buffer, unsigned long size, unsigned long* done, bool exact) override;
    int WriteBytes(const void* buffer, unsigned long size, unsigned long* done, bool exact) override;
    int Flush() override;
    [[nodiscard]] unsigned long long GetSize() const override;
    int SetSize(unsigned long long size) override;
    int Delete(bool toTrash) override;
    int SetPathForUnique(void* path, bool temporary) override;
    int EncodeToXML(void* node) override;

    [[nodiscard]] bool IsOpenForReading() const override { return IsOpen() && !isWritable_; }
    [[nodiscard]] bool IsMarkerAtKnownEnd() const override { return marker_ >= knownSize_; }

private:
    // Where the file lies: absolute, so that it stays the same file when the current directory changes.
    struct Reference {
        std::string path;
        qv::ItemKind kind = qv::ItemKind::kOther;
    };

    [[nodiscard]] bool IsOpen() const { return fork_ != 0; }
    void KeepPath(void* path);
    int Resolve();
    int Open(qv::FileAccess access);
    int CreateFile();
    void BecomeOpen(int descriptor, bool isWritable, const qv::ItemInfo& info);
    int MoveToTrash();
    [[nodiscard]] bool IsCreationInPlace() const;

    qv::Owned path_;
    bool hasReference_ = false;
    Reference reference_;
    std::int16_t fork_ = 0;  // 0 = not open; the descriptor has a field of its own, for it may be larger
    bool isTemporary_ = false;

    int descriptor_ = -1;
    bool isWritable_ = false;
    std::uint64_t marker_ = 0;
    std::uint64_t knownSize_ = 0;  // the size when this object last saw the end
    // The path was chosen because nothing stood there: opening for writing must make the file.
    bool isNameChosen_ = false;
    // The file that this object made, while the object has not deleted it.
    std::optional<qv::ItemIdentity> created_;
};
