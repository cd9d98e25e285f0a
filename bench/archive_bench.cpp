// Archives.

#include <archive.h>
#include <archive_entry.h>
#include <fcntl.h>
#include <memory>
#include <string>
#include <unistd.h>

#include <QVFoundation/QVAdditions.h>
#include <QVFoundation/QVArchive.h>
#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVData.h>
#include <QVFoundation/QVDeflate.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVNumber.h>
#include <QVFoundation/QVStream.h>
#include <QVFoundation/QVString.h>

#include "bench.h"
#include "files.h"
#include "inputs.h"

namespace bench {

namespace {

using Path = std::filesystem::path;
using Handle = std::shared_ptr<void>;

Handle Adopt(void* handle) {
    return {handle, QVRelease};
}

constexpr std::size_t kFiles = 16;
constexpr std::size_t kFileSize = 1 << 20;

struct Sources {
    TemporaryFolder folder;
    std::vector<Path> files;
    std::size_t total = 0;

    explicit Sources(const Bytes& contents) {
        for (std::size_t i = 0; i < kFiles; ++i) {
            files.push_back(folder.Path() / ("file-" + std::to_string(i)));
            WriteFile(files.back(), contents);
            total += contents.size();
        }
    }
};

void ArchiveOurs(const Sources& sources, const Path& target, bool compress) {
    const Handle archive = Adopt(QVArchiveCreate());
    const Handle options = Adopt(QVDictionaryCreate());
    const Handle yes = Adopt(QVNumberCreateWithBool(1));
    if (compress) QVDictionarySetObject(options.get(), yes.get(), L"Compress");
    const Handle path = Adopt(QVStringCreateWithCString(target.c_str()));
    Require(QVArchiveNew(archive.get(), path.get(), options.get()) == QVNoErr, "no archive");
    QVArchiveMakeRootDirectory(archive.get(), kFiles);
    const Handle identifiers = Adopt(QVArrayCreateWithCapacity(kFiles));
    for (const Path& file : sources.files) {
        const Handle source = Adopt(QVStringCreateWithCString(file.c_str()));
        unsigned int identifier = 0;
        Require(QVArchiveAddFile(archive.get(), source.get(), &identifier) == QVNoErr, "a file is not added");
        const Handle number = Adopt(QVNumberCreateWithUInt32(identifier));
        QVArrayAddObject(identifiers.get(), number.get());
    }
    Require(QVArchiveAddItemIntoDirectory(archive.get(), 1, identifiers.get()) == QVNoErr, "no directory");
}

void ArchivePeer(const Sources& sources, const Path& target, bool compress) {
    archive* out = archive_write_new();
    archive_write_set_format_ustar(out);
    if (compress) {
        archive_write_add_filter_gzip(out);
        archive_write_set_filter_option(out, "gzip", "compression-level", "1");
    }
    Require(archive_write_open_filename(out, target.c_str()) == ARCHIVE_OK, "the peer has no archive");
    std::vector<char> piece(kFileSize);
    for (const Path& file : sources.files) {
        archive_entry* entry = archive_entry_new();
        archive_entry_set_pathname(entry, file.filename().c_str());
        archive_entry_set_size(entry, static_cast<la_int64_t>(std::filesystem::file_size(file)));
        archive_entry_set_filetype(entry, AE_IFREG);
        archive_entry_set_perm(entry, 0644);
        archive_write_header(out, entry);
        const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC);
        for (ssize_t size = 0; (size = read(descriptor, piece.data(), piece.size())) > 0;) {
            archive_write_data(out, piece.data(), static_cast<std::size_t>(size));
        }
        close(descriptor);
        archive_entry_free(entry);
    }
    archive_write_close(out);
    archive_write_free(out);
}

// The files' contents through the compressor, from memory to memory.
Floor CompressingAlone() {
    const Bytes contents = English(kFileSize);
    const Handle source = Adopt(QVDataCreate(contents.data(), contents.size()));
    return {"the compressor alone, in memory", Times([source] {
                for (std::size_t i = 0; i < kFiles; ++i) {
                    const Handle packed = Adopt(QVDataCreate(nullptr, 0));
                    const Handle from = Adopt(QVStreamCreateWithMemory(source.get()));
                    const Handle to = Adopt(QVStreamCreateWithMemory(packed.get()));
                    const Handle encoder = Adopt(QVDeflateCreate());
                    Keep(QVDeflateEncode(encoder.get(), to.get(), from.get()));
                }
            })};
}

Comparison CompareArchives(bool compress) {
    const auto sources = std::make_shared<const Sources>(compress ? English(kFileSize) : Random(kFileSize));
    const Path ours = sources->folder.Path() / "ours";
    const Path peers = sources->folder.Path() / "peers";
    ArchiveOurs(*sources, ours, compress);
    ArchivePeer(*sources, peers, compress);
    if (!compress) {
        // The archive holds the files' bytes one after the other, each behind a small header.
        const std::string contents = ReadFile(sources->files[0]);
        const std::string archive = ReadFile(ours);
        Require(archive.size() > sources->total && archive.size() < sources->total + 65536, "another size");
        std::size_t found = 0, at = 0;
        while ((at = archive.find(contents, at)) != std::string::npos)
            at += contents.size(), ++found;
        Require(found == kFiles, "a file is missing");
    } else {
        Require(std::filesystem::file_size(ours) < sources->total * 6 / 10, "it does not compress");
    }
    return {Times([=] {
                unlink(ours.c_str());
                ArchiveOurs(*sources, ours, compress);
            }),
            Times([=] {
                unlink(peers.c_str());
                ArchivePeer(*sources, peers, compress);
            }),
            compress ? "libarchive ustar + gzip 1" : "libarchive ustar",
            1,
            false,
            compress ? CompressingAlone() : Floor()};
}

}  // namespace

void AddArchiveComparisons(Suite& suite) {
    suite.Add("archive.plain", [] { return CompareArchives(false); });
    suite.Add("archive.compressed", [] { return CompareArchives(true); });
}

}  // namespace bench
