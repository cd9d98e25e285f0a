#include <csignal>
#include <fcntl.h>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

#include "fuzz_support.h"
#include "targets.h"

namespace {

// One archive file for the process, in memory where the system has such a place.
std::string ArchivePath() {
    const char* folder = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
    return std::string(folder) + "/qv_fuzz_archive_" + std::to_string(getpid());
}

// A count in a directory that nobody wrote asks for gigabytes of room, and is given them. Here a small limit
// answers for the full disk.
void LimitFileSize() {
    constexpr rlim_t kLargestFile = 1 << 20;
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit = {kLargestFile, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &limit);
}

// Puts the bytes behind the archive's header, behind the library's back.
void AppendBytes(const std::string& path, const std::uint8_t* bytes, std::size_t size) {
    const int file = open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    const bool written = write(file, bytes, size) == static_cast<ssize_t>(size);
    close(file);
    qvfuzz::Check(written, "the archive cannot be prepared");
}

}  // namespace

// The items are any bytes; entering IDs must find its way through them or refuse.
void qvfuzz::ArchiveItems(const std::uint8_t* bytes, std::size_t size) {
    StartLibrary();
    LimitFileSize();
    const std::string path = ArchivePath();
    {
        Scope scope;
        void* pathText = scope.Keep(QVStringCreateWithCString(path.c_str()));
        void* archive = scope.Keep(QVArchiveCreate());
        Check(QVArchiveNew(archive, pathText, nullptr) == QVNoErr, "the archive cannot be made");
        AppendBytes(path, bytes, size);
        void* ids = scope.Keep(QVArrayCreateWithCapacity(3));
        for (unsigned int id = 2; id < 5; ++id)
            QVArrayAddObject(ids, scope.Keep(QVNumberCreateWithUInt32(id)));
        for (const unsigned int directory : {1U, 2U, 7U})
            (void)QVArchiveAddItemIntoDirectory(archive, directory, ids);
    }
    unlink(path.c_str());
}
