// qvtool archive create | list | extract

#include <algorithm>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <stdlib.h>
#include <string>
#include <unistd.h>
#include <unordered_map>
#include <vector>

#include <QVFoundation/QVFoundation.h>

#include "archive_reader.h"
#include "commands.h"
#include "extraction_folder.h"
#include "file_walk.h"
#include "member_index.h"
#include "output.h"
#include "progress.h"
#include "progress_switches.h"
#include "tool.h"

namespace {

using tool::ArchiveItem;
using tool::ArchiveReader;
using tool::Command;
using tool::Failure;
using tool::Member;

constexpr unsigned int kRootID = 1;
// From here on a single file takes long enough to be watched.
constexpr std::uint64_t kWatchedSize = 16 << 20;

double SecondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void PrintSummary(const char* verb, std::size_t items, std::uint64_t bytes, double seconds) {
    std::printf("%s %s items, %s bytes, %.1f MB/s\n", verb, tool::Grouped(items).c_str(),
                tool::Grouped(bytes).c_str(), tool::Rate(bytes, seconds));
}

// ---- create ----

struct CreateArguments {
    tool::Output archive;
    std::vector<std::string> paths;
    bool compress = false;
    bool noIndex = false;
    bool verbose = false;
    tool::ProgressSwitches switches;
};

// A folder of our own for the index's text, gone at the end.
class ScratchFolder final {
public:
    ScratchFolder() {
        const char* base = std::getenv("TMPDIR");
        path_ = std::string(base != nullptr && base[0] == '/' ? base : "/tmp") + "/qvtool.XXXXXX";
        if (mkdtemp(path_.data()) == nullptr) throw Failure(tool::SystemText(path_));
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder() {
        unlink(FilePath().c_str());
        rmdir(path_.c_str());
    }

    [[nodiscard]] std::string FilePath() const { return path_ + "/qvtool-index"; }

private:
    std::string path_;
};

class ArchiveMaker final {
public:
    // Starts the archive at `path`, with room for so many files.
    ArchiveMaker(const CreateArguments& arguments, const std::string& path, std::size_t fileCount)
        : arguments_(arguments), path_(path), archive_(QVArchiveCreate()), options_(QVDictionaryCreate()) {
        SetCompression(arguments.compress);
        const tool::Object text = tool::PathText(path);
        tool::Require(QVArchiveNew(archive_.Get(), text.Get(), options_.Get()), arguments_.archive.path);
        tool::Require(QVArchiveMakeRootDirectory(archive_.Get(), static_cast<unsigned long>(fileCount)),
                      RootName());
    }

    // Throws a Failure that names the file; the archive stays as it was then.
    void Add(const tool::FoundFile& file, tool::Progress& progress) {
        // One call stores the file, and the archive grows as it does; a compressed body grows at its own
        // pace.
        std::optional<tool::GrowthWatch> watch;
        if (!arguments_.compress && file.size >= kWatchedSize) watch.emplace(path_, progress);
        const unsigned int id = AddFile(file.path);
        members_.push_back({id, arguments_.compress, file.mode, file.size, file.name});
    }

    void EnterIntoRoot() {
        const tool::Object ids(QVArrayCreateWithCapacity(static_cast<unsigned long>(members_.size())));
        for (const Member& member : members_) {
            const tool::Object number(QVNumberCreateWithUInt32(member.id));
            QVArrayAddObject(ids.Get(), number.Get());
        }
        tool::Require(QVArchiveAddItemIntoDirectory(archive_.Get(), kRootID, ids.Get()), RootName());
    }

    // The index is never compressed, so that it can tell which of the others are.
    void AddIndex() {
        const ScratchFolder folder;
        const std::string text = tool::EncodeMemberIndex(members_);
        std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(folder.FilePath().c_str(), "wb"),
                                                             &std::fclose);
        if (!file || std::fwrite(text.data(), 1, text.size(), file.get()) != text.size() ||
            std::fclose(file.release()) != 0) {
            throw Failure(tool::SystemText(folder.FilePath()));
        }
        SetCompression(false);
        AddFile(folder.FilePath());
    }

private:
    void SetCompression(bool on) {
        const tool::Object value(QVNumberCreateWithBool(on ? 1 : 0));
        QVDictionarySetObject(options_.Get(), value.Get(), L"Compress");
    }

    unsigned int AddFile(const std::string& path) {
        const tool::Object text = tool::PathText(path);
        unsigned int id = 0;
        const int result = QVArchiveAddFile(archive_.Get(), text.Get(), &id);
        tool::Require(result, path);
        return id;
    }

    [[nodiscard]] std::string RootName() const { return arguments_.archive.path + ": the root directory"; }

    const CreateArguments& arguments_;
    std::string path_;
    tool::Object archive_;
    tool::Object options_;
    std::vector<Member> members_;
};

// What was left out on purpose: each of them only when that is asked for, for a system folder has thousands
// of links.
void TellNotes(const std::vector<std::string>& notes, bool verbose) {
    for (std::size_t i = 0; verbose && i < notes.size(); ++i) {
        tool::TellError(notes[i]);
    }
    if (!verbose && !notes.empty()) {
        tool::TellError(tool::Grouped(notes.size()) + " entries left out (--verbose names them)");
    }
}

struct Totals {
    std::size_t items = 0;
    std::uint64_t bytes = 0;
};

// Makes the archive at `path`. Files that cannot be stored are told and left out.
Totals MakeArchive(const CreateArguments& arguments, const tool::WalkResult& found, const std::string& path,
                   tool::ErrorCount& errors) {
    ArchiveMaker maker(arguments, path, found.files.size());
    Totals totals;
    tool::Progress progress(found.totalSize, arguments.switches.Mode());
    for (const tool::FoundFile& file : found.files) {
        try {
            maker.Add(file, progress);
            totals.bytes += file.size;
            ++totals.items;
        } catch (const Failure& failure) {
            progress.Clear();
            errors.Tell(failure.what());
        }
        progress.Advance(file.size);
    }
    maker.EnterIntoRoot();
    if (!arguments.noIndex) maker.AddIndex();
    return totals;
}

void Create(const CreateArguments& arguments) {
    const auto start = std::chrono::steady_clock::now();
    const tool::LibrarySession library;
    arguments.archive.Check();
    tool::ErrorCount errors;
    const tool::WalkResult found = tool::FindFiles(arguments.paths, arguments.archive.path);
    if (!arguments.switches.quiet) TellNotes(found.notes, arguments.verbose);
    for (const std::string& error : found.errors)
        errors.Tell(error);

    tool::OutputFile output(arguments.archive);
    const Totals totals = MakeArchive(arguments, found, output.Path(), errors);
    output.PutInPlace();
    if (!arguments.switches.quiet) {
        PrintSummary("created:", totals.items, totals.bytes, SecondsSince(start));
    }
    errors.Finish("file or folder", "files or folders", "could not be added");
}

// ---- list ----

const char* TypeName(const ArchiveItem& item) {
    return item.type == ArchiveItem::kDirectory ? "directory" : "file";
}

void List(const std::string& path) {
    const ArchiveReader archive(path);
    const auto index = tool::FindMemberIndex(archive);
    std::unordered_map<std::uint32_t, const Member*> members;
    if (index) {
        for (const Member& member : index->members)
            members.emplace(member.id, &member);
    }

    std::printf("archive %s: %s bytes, code %016" PRIX64 ", options %" PRIu32 " bytes\n",
                tool::OneLine(path).c_str(), tool::Grouped(archive.FileSize()).c_str(), archive.Code(),
                archive.OptionsLength());
    std::printf("%10s  %-9s  %15s  %15s  %s\n", "ID", "type", "offset", "body", "name");
    std::uint64_t bytes = 0;
    for (const ArchiveItem& item : archive.Items()) {
        std::string name;
        if (item.type == ArchiveItem::kDirectory) {
            name = "(" + tool::Grouped(item.entries.size()) + " entries, room for " +
                   tool::Grouped(item.Capacity()) + ")";
        } else if (index && item.id == index->itemID) {
            name = "(member index)";
        } else if (const auto member = members.find(item.id); member != members.end()) {
            name = tool::OneLine(member->second->name) + (member->second->compressed ? " (compressed)" : "");
        }
        std::printf("%10" PRIu32 "  %-9s  %15" PRIu64 "  %15" PRIu64 "  %s\n", item.id, TypeName(item),
                    item.offset, item.bodyLength, name.c_str());
        bytes += item.bodyLength;
    }
    std::printf("listed: %s items, %s bytes in their bodies\n", tool::Grouped(archive.Items().size()).c_str(),
                tool::Grouped(bytes).c_str());
    if (!archive.Damage().empty()) throw Failure(path + ": " + archive.Damage());
}

// ---- extract ----

struct ExtractArguments {
    std::string archive;
    std::string folder;
    bool overwrite = false;
    tool::ProgressSwitches switches;
};

// The members that the index names; without one, every file item under a name made of its ID.
std::vector<Member> MembersToExtract(const ArchiveReader& archive, bool quiet) {
    if (auto index = tool::FindMemberIndex(archive)) return std::move(index->members);
    if (!quiet) tool::TellError("the archive names no files; they are named by their item IDs");
    std::vector<Member> members;
    for (const ArchiveItem& item : archive.Items()) {
        if (item.type != ArchiveItem::kFile) continue;
        char name[32];
        std::snprintf(name, sizeof name, "item-%010" PRIu32, item.id);
        members.push_back({item.id, false, 0644, item.bodyLength, name});
    }
    return members;
}

void WriteBody(const ArchiveReader& archive, const ArchiveItem& item, int descriptor,
               std::vector<unsigned char>& buffer, tool::Progress& progress) {
    std::uint64_t offset = item.BodyOffset();
    for (std::uint64_t left = item.bodyLength; left > 0;) {
        const auto piece = static_cast<std::size_t>(std::min<std::uint64_t>(left, buffer.size()));
        archive.ReadAt(offset, buffer.data(), piece);
        for (std::size_t written = 0; written < piece;) {
            const ssize_t done = write(descriptor, buffer.data() + written, piece - written);
            if (done < 0) throw Failure(tool::SystemText("cannot write it"));
            written += static_cast<std::size_t>(done);
        }
        offset += piece;
        left -= piece;
        progress.Advance(piece);
    }
}

void Extract(const ExtractArguments& arguments) {
    const auto start = std::chrono::steady_clock::now();
    const ArchiveReader archive(arguments.archive);
    if (!archive.Damage().empty()) throw Failure(arguments.archive + ": " + archive.Damage());
    const std::vector<Member> members = MembersToExtract(archive, arguments.switches.quiet);
    std::unordered_map<std::uint32_t, const ArchiveItem*> items;
    for (const ArchiveItem& item : archive.Items())
        items.emplace(item.id, &item);
    std::uint64_t total = 0;
    for (const Member& member : members)
        total += items.at(member.id)->bodyLength;

    tool::ExtractionFolder folder(arguments.folder);
    tool::Progress progress(total, arguments.switches.Mode());
    std::vector<unsigned char> buffer(1 << 20);
    tool::ErrorCount errors;
    std::uint64_t bytes = 0;
    std::size_t count = 0;
    for (const Member& member : members) {
        const ArchiveItem& item = *items.at(member.id);
        const std::uint64_t doneAfter = progress.Done() + item.bodyLength;
        try {
            if (member.compressed) throw Failure("stored compressed, and this version has no decoder");
            folder.WriteFile(member.name, member.mode, arguments.overwrite,
                             [&](int descriptor) { WriteBody(archive, item, descriptor, buffer, progress); });
            bytes += item.bodyLength;
            ++count;
        } catch (const Failure& failure) {
            progress.Clear();
            errors.Tell(member.name + ": " + failure.what());
        }
        progress.Advance(doneAfter - progress.Done());
    }
    progress.Clear();
    if (!arguments.switches.quiet) PrintSummary("extracted:", count, bytes, SecondsSince(start));
    errors.Finish("file", "files", "could not be extracted");
}

// ---- the command line ----

constexpr char kQuietText[] = "No progress bar, no notes and no summary; errors only";

void SetUpCreate(Command& family) {
    auto arguments = std::make_shared<CreateArguments>();
    Command create =
        family.Subcommand("create", "Put files, and the files below directories, into a new archive");
    arguments->archive.AddTo(create, "archive", "The archive to write");
    create.Arguments("paths", arguments->paths, "Files and directories");
    create.Flag("--compress", arguments->compress,
                "Store the files' bodies compressed (they cannot be extracted yet)");
    create.Flag("--no-index", arguments->noIndex,
                "Leave the member index out; the archive then holds no names");
    create.Flag("-v,--verbose", arguments->verbose, "Name the links and other entries that are left out");
    arguments->switches.AddTo(create, kQuietText);
    create.Action([arguments] { Create(*arguments); });
}

void SetUpList(Command& family) {
    auto archive = std::make_shared<std::string>();
    Command list = family.Subcommand("list", "Check an archive and print the table of its items");
    list.Argument("archive", *archive, "The archive to read");
    list.Action([archive] { List(*archive); });
}

void SetUpExtract(Command& family) {
    auto arguments = std::make_shared<ExtractArguments>();
    Command extract =
        family.Subcommand("extract", "Write an archive's files into a folder, and nothing outside it");
    extract.Argument("archive", arguments->archive, "The archive to read");
    extract.Argument("folder", arguments->folder, "The folder to write into; it is made when it is missing");
    extract.Flag("-f,--overwrite", arguments->overwrite, "Replace files that exist already");
    arguments->switches.AddTo(extract, kQuietText);
    extract.Action([arguments] { Extract(*arguments); });
}

const tool::CommandFamily family("archive", [](Command& program) {
    Command archive = program.Subcommand("archive", "Create, list and extract archives");
    SetUpCreate(archive);
    SetUpList(archive);
    SetUpExtract(archive);
});

}  // namespace
