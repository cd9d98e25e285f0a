// qvtool archive create | list | extract

#include <algorithm>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <memory>
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
#include "progress.h"
#include "tool.h"

namespace {

using tool::ArchiveItem;
using tool::ArchiveReader;
using tool::Command;
using tool::Failure;
using tool::Member;

constexpr unsigned int kRootID = 1;

struct Switches {
    bool progress = false;
    bool noProgress = false;
    bool quiet = false;

    [[nodiscard]] tool::ProgressMode Mode() const {
        if (quiet || noProgress) return tool::ProgressMode::kNever;
        return progress ? tool::ProgressMode::kAlways : tool::ProgressMode::kWhenTerminal;
    }
};

void AddSwitches(Command& command, Switches& switches) {
    command.Flag("--progress", switches.progress, "Show a progress bar even when stderr is no terminal");
    command.Flag("--no-progress", switches.noProgress, "Show no progress bar");
    command.Exclude("--progress", "--no-progress");
    command.Flag("-q,--quiet", switches.quiet, "No progress bar, no notes and no summary; errors only");
}

double SecondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void PrintSummary(const char* verb, std::size_t items, std::uint64_t bytes, double seconds) {
    std::printf("%s %s items, %s bytes, %.1f MB/s\n", verb, tool::Grouped(items).c_str(),
                tool::Grouped(bytes).c_str(), tool::Rate(bytes, seconds));
}

// Collects the errors that do not end a command; they make it fail at its end.
class ErrorCount final {
public:
    void Tell(const std::string& message) {
        std::fprintf(stderr, "qvtool: %s\n", message.c_str());
        ++count_;
    }
    void Finish(const char* what) const {
        if (count_ > 0) throw Failure(tool::Grouped(count_) + what);
    }

private:
    std::size_t count_ = 0;
};

// ---- create ----

struct CreateArguments {
    std::string archive;
    std::vector<std::string> paths;
    bool compress = false;
    bool noIndex = false;
    bool verbose = false;
    Switches switches;
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
    explicit ArchiveMaker(const CreateArguments& arguments)
        : arguments_(arguments), archive_(QVArchiveCreate()), options_(QVDictionaryCreate()) {
        SetCompression(arguments.compress);
    }

    void Start(std::size_t fileCount) {
        const tool::Object path = tool::PathText(arguments_.archive);
        tool::Require(QVArchiveNew(archive_.Get(), path.Get(), options_.Get()), arguments_.archive);
        tool::Require(QVArchiveMakeRootDirectory(archive_.Get(), static_cast<unsigned long>(fileCount)),
                      arguments_.archive + ": the root directory");
    }

    void Add(const tool::FoundFile& file) {
        const unsigned int id = AddFile(file.path);
        members_.push_back({id, arguments_.compress, file.mode, file.size, file.name});
    }

    void EnterIntoRoot() {
        const tool::Object ids(QVArrayCreateWithCapacity(static_cast<unsigned long>(members_.size())));
        for (const Member& member : members_) {
            const tool::Object number(QVNumberCreateWithUInt32(member.id));
            QVArrayAddObject(ids.Get(), number.Get());
        }
        tool::Require(QVArchiveAddItemIntoDirectory(archive_.Get(), kRootID, ids.Get()),
                      arguments_.archive + ": the root directory");
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

    [[nodiscard]] std::size_t Count() const { return members_.size(); }

private:
    void SetCompression(bool on) {
        const tool::Object value(QVNumberCreateWithBool(on ? 1 : 0));
        QVDictionarySetObject(options_.Get(), value.Get(), L"Compress");
    }

    unsigned int AddFile(const std::string& path) {
        const tool::Object text = tool::PathText(path);
        unsigned int id = 0;
        const int result = QVArchiveAddFile(archive_.Get(), text.Get(), &id);
        if (result != QVNoErr) throw Failure(tool::ResultText(result));
        return id;
    }

    const CreateArguments& arguments_;
    tool::Object archive_;
    tool::Object options_;
    std::vector<Member> members_;
};

// What was left out on purpose: each of them only when that is asked for, for a system folder has thousands
// of links.
void TellNotes(const std::vector<std::string>& notes, bool verbose) {
    for (std::size_t i = 0; verbose && i < notes.size(); ++i) {
        std::fprintf(stderr, "qvtool: %s\n", tool::OneLine(notes[i]).c_str());
    }
    if (!verbose && !notes.empty()) {
        std::fprintf(stderr, "qvtool: %s entries left out (--verbose names them)\n",
                     tool::Grouped(notes.size()).c_str());
    }
}

void Create(const CreateArguments& arguments) {
    const auto start = std::chrono::steady_clock::now();
    const tool::LibrarySession library;
    ErrorCount errors;
    const tool::WalkResult found = tool::FindFiles(arguments.paths, arguments.archive);
    if (!arguments.switches.quiet) TellNotes(found.notes, arguments.verbose);
    for (const std::string& error : found.errors)
        errors.Tell(error);

    ArchiveMaker maker(arguments);
    maker.Start(found.files.size());
    std::uint64_t bytes = 0;
    {
        tool::Progress progress(found.totalSize, arguments.switches.Mode());
        for (const tool::FoundFile& file : found.files) {
            try {
                maker.Add(file);
                bytes += file.size;
            } catch (const Failure& failure) {
                progress.Clear();
                errors.Tell(tool::OneLine(file.path) + ": " + failure.what());
            }
            progress.Advance(file.size);
        }
    }
    maker.EnterIntoRoot();
    if (!arguments.noIndex) maker.AddIndex();
    if (!arguments.switches.quiet) PrintSummary("created:", maker.Count(), bytes, SecondsSince(start));
    errors.Finish(" files or folders could not be added");
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

    std::printf("archive %s: %s bytes, code %016" PRIX64 ", options %" PRIu32 " bytes\n", path.c_str(),
                tool::Grouped(archive.FileSize()).c_str(), archive.Code(), archive.OptionsLength());
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
    Switches switches;
};

// The members that the index names; without one, every file item under a name made of its ID.
std::vector<Member> MembersToExtract(const ArchiveReader& archive, bool quiet) {
    if (auto index = tool::FindMemberIndex(archive)) return std::move(index->members);
    if (!quiet) std::fputs("qvtool: the archive names no files; they are named by their item IDs\n", stderr);
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
               std::vector<unsigned char>& buffer) {
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
    ErrorCount errors;
    std::uint64_t bytes = 0;
    std::size_t count = 0;
    for (const Member& member : members) {
        const ArchiveItem& item = *items.at(member.id);
        try {
            if (member.compressed) throw Failure("stored compressed, and this version has no decoder");
            folder.WriteFile(member.name, member.mode, arguments.overwrite,
                             [&](int descriptor) { WriteBody(archive, item, descriptor, buffer); });
            bytes += item.bodyLength;
            ++count;
        } catch (const Failure& failure) {
            progress.Clear();
            errors.Tell(tool::OneLine(member.name) + ": " + failure.what());
        }
        progress.Advance(item.bodyLength);
    }
    progress.Clear();
    if (!arguments.switches.quiet) PrintSummary("extracted:", count, bytes, SecondsSince(start));
    errors.Finish(" files could not be extracted");
}

// ---- the command line ----

void SetUpCreate(Command& family) {
    auto arguments = std::make_shared<CreateArguments>();
    Command create =
        family.Subcommand("create", "Put files, and the files below directories, into a new archive");
    create.Argument("archive", arguments->archive, "The archive to write; a file of this name is replaced");
    create.Arguments("paths", arguments->paths, "Files and directories");
    create.Flag("--compress", arguments->compress,
                "Store the files' bodies compressed (they cannot be extracted yet)");
    create.Flag("--no-index", arguments->noIndex,
                "Leave the member index out; the archive then holds no names");
    create.Flag("-v,--verbose", arguments->verbose, "Name the links and other entries that are left out");
    AddSwitches(create, arguments->switches);
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
    extract.Flag("--overwrite", arguments->overwrite, "Replace files that exist already");
    AddSwitches(extract, arguments->switches);
    extract.Action([arguments] { Extract(*arguments); });
}

const tool::CommandFamily family("archive", [](Command& program) {
    Command archive = program.Subcommand("archive", "Create, list and extract archives");
    SetUpCreate(archive);
    SetUpList(archive);
    SetUpExtract(archive);
});

}  // namespace
