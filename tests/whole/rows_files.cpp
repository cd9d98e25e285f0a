// Files, the file manager and archives.
#include <QVFoundation/QVArchive.h>
#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVFile.h>
#include <QVFoundation/QVFileManager.h>
#include <QVFoundation/QVNumber.h>

#include "support/environment.h"
#include "support/strings.h"
#include "support/temporary_directory.h"
#include "whole/row.h"

namespace qvtest {
namespace {

using qv::Owned;

Owned PathString(const std::string& path) {
    return Owned{QVStringCreateWithCString(path.c_str())};
}

// A directory that holds one file, "file" with the bytes "abc", a file object for it, and its path. The
// directory's name makes every path too long for a string's own room.
struct Scene {
    Scene() {
        std::filesystem::create_directory(folder);
        WriteFile(folder + "/file", "abc");
        QVFileSetPath(file.Get(), path.Get());
    }

    TemporaryDirectory directory;
    std::string folder = directory / std::string(60, 'd');
    Owned path = PathString(folder + "/file");
    Owned newPath = PathString(folder + "/new");
    Owned file{QVFileCreate()};
};

// A function of the open file that needs no memory.
Row OnOpenFile(const char* name, bool (*isRight)(void* file), bool (*isRightForNull)()) {
    return {name,
            [isRight](Attempt& attempt) {
                const Scene scene;
                QVFileOpenForWriting(scene.file.Get());
                attempt.NeedsNoMemory([&] { return isRight(scene.file.Get()); });
            },
            isRightForNull};
}

Row CreatesFileAt(const char* name, void* (*create)(void*)) {
    return {name,
            [create](Attempt& attempt) {
                const Scene scene;
                attempt.OthersLog().Creates([&] { return create(scene.path.Get()); });
            },
            [create] { return create(nullptr) == nullptr; }};
}

Rows FileFamilyRows() {
    return {
        {"QVFileCreate",
         [](Attempt& attempt) {
             attempt.Logs("Couldn't allocate the buffer for the QVFile.").Creates(QVFileCreate);
         },
         TakesNoHandle},
        {"QVFileSetPath",
         [](Attempt& attempt) {
             const Scene scene;
             attempt.AnswersCode([&] { return QVFileSetPath(scene.file.Get(), scene.path.Get()); });
         },
         [] {
             const Scene scene;
             return QVFileSetPath(nullptr, nullptr) < 0 && QVFileSetPath(nullptr, scene.path.Get()) < 0 &&
                    QVFileSetPath(scene.file.Get(), nullptr) == QVErrFileNotFound;
         }},
        {"QVFileGetPath",
         [](Attempt& attempt) {
             const Scene scene;
             attempt.NeedsNoMemory([&] { return QVFileGetPath(scene.file.Get()) == scene.path.Get(); });
         },
         [] { return QVFileGetPath(nullptr) == nullptr; }},
        {"QVFileOpenForReading",
         [](Attempt& attempt) {
             const Scene scene;
             attempt.NeedsNoMemory([&] { return QVFileOpenForReading(scene.file.Get()) == QVNoErr; });
         },
         [] { return QVFileOpenForReading(nullptr) < 0; }},
        {"QVFileOpenForWriting",
         [](Attempt& attempt) {
             const Scene scene;
             QVFileSetPath(scene.file.Get(), scene.newPath.Get());
             attempt.AnswersCode([&] { return QVFileOpenForWriting(scene.file.Get()); });
         },
         [] { return QVFileOpenForWriting(nullptr) < 0; }},
        OnOpenFile(
            "QVFileSetMarker", [](void* file) { return QVFileSetMarker(file, 0, 1) == QVNoErr; },
            [] { return QVFileSetMarker(nullptr, 0, 1) < 0; }),
        OnOpenFile(
            "QVFileGetMarker", [](void* file) { return QVFileGetMarker(file) == 0; },
            [] { return QVFileGetMarker(nullptr) == 0; }),
        OnOpenFile(
            "QVFileReadBytes",
            [](void* file) {
                char bytes[3];
                return QVFileReadBytes(file, bytes, 3, nullptr, 1) == QVNoErr && bytes[2] == 'c';
            },
            [] {
                char byte;
                return QVFileReadBytes(nullptr, &byte, 1, nullptr, 1) < 0;
            }),
        OnOpenFile(
            "QVFileWriteBytes",
            [](void* file) { return QVFileWriteBytes(file, "xyz", 3, nullptr, 1) == QVNoErr; },
            [] { return QVFileWriteBytes(nullptr, "xyz", 3, nullptr, 1) < 0; }),
        OnOpenFile(
            "QVFileFlush", [](void* file) { return QVFileFlush(file) == QVNoErr; },
            [] { return QVFileFlush(nullptr) < 0; }),
        OnOpenFile(
            "QVFileGetSize", [](void* file) { return QVFileGetSize(file) == 3; },
            [] { return QVFileGetSize(nullptr) == 0; }),
        OnOpenFile(
            "QVFileSetSize", [](void* file) { return QVFileSetSize(file, 100) == QVNoErr; },
            [] { return QVFileSetSize(nullptr, 100) < 0; }),
        OnOpenFile(
            "QVFileClose", [](void* file) { return QVFileClose(file) == QVNoErr; },
            [] { return QVFileClose(nullptr) <= 0; }),
        {"QVFileDelete",
         [](Attempt& attempt) {
             const Scene scene;
             const std::string home = scene.directory / "home";
             std::filesystem::create_directory(home);
             const ScopedVariable homeVariable("HOME", home.c_str());
             const ScopedVariable dataVariable("XDG_DATA_HOME", nullptr);
             attempt.AnswersCode([&] { return QVFileDelete(scene.file.Get(), 1); });
             EXPECT_EQ(Exists(scene.folder + "/file"), attempt.MetShortage());
         },
         [] { return QVFileDelete(nullptr, 0) < 0 && QVFileDelete(nullptr, 1) < 0; }},
        CreatesFileAt("QVFileCreateTemporary", QVFileCreateTemporary),
        CreatesFileAt("QVFileCreateUnique", QVFileCreateUnique),
    };
}

Rows FileManagerRows() {
    return {
        {"QVFileManagerIsExistsAtPath",
         [](Attempt& attempt) {
             const Scene scene;
             attempt.Answers(1, 0, [&] { return QVFileManagerIsExistsAtPath(scene.path.Get()); });
         },
         [] { return QVFileManagerIsExistsAtPath(nullptr) == 0; }},
        {"QVFileManagerMakeDirectory",
         [](Attempt& attempt) {
             const Scene scene;
             const Owned path = PathString(scene.folder + "/a/b");
             attempt.OthersLog().AnswersCode([&] { return QVFileManagerMakeDirectory(path.Get(), 1); });
         },
         [] {
             return QVFileManagerMakeDirectory(nullptr, 0) < 0 && QVFileManagerMakeDirectory(nullptr, 1) < 0;
         }},
        {"QVFileManagerDeleteItem",
         [](Attempt& attempt) {
             const Scene scene;
             attempt.AnswersCode([&] { return QVFileManagerDeleteItem(scene.path.Get()); });
         },
         [] { return QVFileManagerDeleteItem(nullptr) < 0; }},
        {"QVFileManagerCopyItem",
         [](Attempt& attempt) {
             const Scene scene;
             const Owned source = PathString(scene.folder);
             const std::string copies = scene.directory / "copies";
             std::filesystem::create_directory(copies);
             const Owned destination = PathString(copies);
             attempt.OthersLog().AnswersCode(
                 [&] { return QVFileManagerCopyItem(source.Get(), destination.Get()); });
             EXPECT_EQ(std::filesystem::is_empty(copies), attempt.MetShortage()) << "something is left";
         },
         [] {
             const Scene scene;
             return QVFileManagerCopyItem(nullptr, nullptr) < 0 &&
                    QVFileManagerCopyItem(nullptr, scene.path.Get()) < 0 &&
                    QVFileManagerCopyItem(scene.path.Get(), nullptr) < 0;
         }},
    };
}

// A scene with an archive, as its file "archive".
struct ArchiveScene : Scene {
    ArchiveScene() {
        const Owned yes{QVNumberCreateWithBool(1)};
        QVDictionarySetObject(options.Get(), yes.Get(), L"Compress");
    }
    void Start(void* withOptions) const {
        EXPECT_EQ(QVArchiveNew(archive.Get(), archivePath.Get(), withOptions), QVNoErr);
        EXPECT_EQ(QVArchiveMakeRootDirectory(archive.Get(), 0), QVNoErr);
    }

    Owned archivePath = PathString(folder + "/archive");
    Owned options{QVDictionaryCreate()};
    Owned archive{QVArchiveCreate()};
};

Rows ArchiveRows() {
    return {
        {"QVArchiveCreate", [](Attempt& attempt) { attempt.Creates(QVArchiveCreate); }, TakesNoHandle},
        {"QVArchiveNew",
         [](Attempt& attempt) {
             const ArchiveScene scene;
             attempt.OthersLog().MayDoWithout().AnswersCode([&] {
                 return QVArchiveNew(scene.archive.Get(), scene.archivePath.Get(), scene.options.Get());
             });
         },
         [] {
             const ArchiveScene scene;
             return QVArchiveNew(nullptr, nullptr, nullptr) < 0 &&
                    QVArchiveNew(nullptr, scene.archivePath.Get(), nullptr) < 0 &&
                    QVArchiveNew(scene.archive.Get(), nullptr, scene.options.Get()) == QVErrParam;
         }},
        {"QVArchiveMakeRootDirectory",
         [](Attempt& attempt) {
             const ArchiveScene scene;
             QVArchiveNew(scene.archive.Get(), scene.archivePath.Get(), nullptr);
             attempt.OthersLog().AnswersCode(
                 [&] { return QVArchiveMakeRootDirectory(scene.archive.Get(), 100); });
         },
         [] { return QVArchiveMakeRootDirectory(nullptr, 1) < 0; }},
        {"QVArchiveAddFile",
         [](Attempt& attempt) {
             const ArchiveScene scene;
             scene.Start(scene.options.Get());
             int code = 0;
             unsigned int id = 0;
             // A temporary file that cannot be made counts as a matter of permission.
             attempt.OthersLog().MayDoWithout().AnswersCode(
                 [&] { return code = QVArchiveAddFile(scene.archive.Get(), scene.path.Get(), &id); },
                 {QVErrMemory, QVErrPermission});
             EXPECT_EQ(id, code == QVNoErr ? 2U : 0U);
         },
         [] {
             const ArchiveScene scene;
             scene.Start(nullptr);
             return QVArchiveAddFile(nullptr, nullptr, nullptr) < 0 &&
                    QVArchiveAddFile(nullptr, scene.path.Get(), nullptr) < 0 &&
                    QVArchiveAddFile(scene.archive.Get(), nullptr, nullptr) < 0;
         }},
        {"QVArchiveAddItemIntoDirectory",
         [](Attempt& attempt) {
             const ArchiveScene scene;
             scene.Start(nullptr);
             QVArchiveAddFile(scene.archive.Get(), scene.path.Get(), nullptr);
             const Owned id{QVNumberCreateWithUInt32(2)};
             const Owned ids{QVArrayCreateWithObject(id.Get())};
             attempt.OthersLog().AnswersCode(
                 [&] { return QVArchiveAddItemIntoDirectory(scene.archive.Get(), 1, ids.Get()); },
                 {QVErrMemory, QVErrPermission});
         },
         [] {
             const ArchiveScene scene;
             scene.Start(nullptr);
             return QVArchiveAddItemIntoDirectory(nullptr, 1, nullptr) < 0 &&
                    QVArchiveAddItemIntoDirectory(scene.archive.Get(), 1, nullptr) == QVErrParam;
         }},
    };
}

}  // namespace

Rows FileRows() {
    return Joined({FileFamilyRows(), FileManagerRows(), ArchiveRows()});
}

}  // namespace qvtest
