#include "file_walk.h"

#include <algorithm>
#include <filesystem>
#include <unordered_set>

#include "tool.h"

namespace tool {

namespace fs = std::filesystem;

namespace {

class Walk final {
public:
    explicit Walk(const std::string& except) : except_(Canonical(except)) {}

    void Add(const std::string& argument) {
        std::error_code error;
        const fs::file_status status = fs::status(argument, error);
        if (!fs::exists(status)) {
            throw Failure(argument + ": " + (error ? error.message() : "no such file or directory"));
        }
        const std::string name = ArchiveName(argument);
        if (fs::is_directory(status)) {
            VisitDirectory(argument, name);
        } else {
            VisitFile(argument, name, status);
        }
    }

    WalkResult Take() { return std::move(result_); }

private:
    static fs::path Canonical(const fs::path& path) {
        std::error_code error;
        fs::path canonical = fs::weakly_canonical(path, error);
        return error ? fs::path() : canonical;
    }

    // "/a/./b/" becomes "a/b", "../c" becomes "c" and "." becomes "": nothing in an archive points out of its
    // folder.
    static std::string ArchiveName(const fs::path& path) {
        fs::path name;
        for (const fs::path& component : path.lexically_normal().relative_path()) {
            if (component != "." && component != ".." && !component.empty()) {
                name /= component;
            }
        }
        return name.native();
    }

    // The folders still to be read wait in a list of our own, so that no depth of nesting overflows the
    // stack.
    void VisitDirectory(const fs::path& top, const std::string& topName) {
        struct Waiting {
            fs::path path;
            std::string name;
        };
        std::vector<Waiting> waiting{{top, topName}};
        while (!waiting.empty()) {
            const Waiting entry = std::move(waiting.back());
            waiting.pop_back();
            std::error_code error;
            const fs::file_status status =
                entry.path == top ? fs::status(entry.path, error) : fs::symlink_status(entry.path, error);
            if (error) {
                result_.errors.push_back(entry.path.native() + ": " + error.message());
            } else if (!fs::is_directory(status)) {
                VisitFile(entry.path, entry.name, status);
            } else {
                std::vector<fs::path> children = SortedChildren(entry.path);
                for (auto child = children.rbegin(); child != children.rend(); ++child) {
                    const std::string leaf = child->filename().native();
                    waiting.push_back({*child, entry.name.empty() ? leaf : entry.name + "/" + leaf});
                }
            }
        }
    }

    std::vector<fs::path> SortedChildren(const fs::path& directory) {
        std::vector<fs::path> children;
        std::error_code error;
        for (fs::directory_iterator at(directory, error), end; !error && at != end; at.increment(error)) {
            children.push_back(at->path());
        }
        if (error) {
            result_.errors.push_back(directory.native() + ": " + error.message());
        }
        std::sort(children.begin(), children.end(),
                  [](const fs::path& left, const fs::path& right) { return left.native() < right.native(); });
        return children;
    }

    void VisitFile(const fs::path& path, const std::string& name, const fs::file_status& status) {
        if (!fs::is_regular_file(status)) {
            result_.notes.push_back(path.native() + ": left out (not a regular file)");
            return;
        }
        if (!except_.empty() && path.filename() == except_.filename() && Canonical(path) == except_) {
            result_.notes.push_back(path.native() + ": left out (it is the archive)");
            return;
        }
        if (!names_.insert(name).second) {
            result_.notes.push_back(path.native() +
                                    ": left out (the archive has a file of this name already)");
            return;
        }
        std::error_code error;
        const std::uint64_t size = fs::file_size(path, error);
        if (error) {
            result_.errors.push_back(path.native() + ": " + error.message());
            return;
        }
        const auto mode = static_cast<unsigned>(status.permissions() & fs::perms::all);
        result_.files.push_back({path.native(), name, size, mode});
        result_.totalSize += size;
    }

    fs::path except_;
    WalkResult result_;
    std::unordered_set<std::string> names_;
};

}  // namespace

WalkResult FindFiles(const std::vector<std::string>& paths, const std::string& except) {
    Walk walk(except);
    for (const std::string& path : paths) {
        walk.Add(path);
    }
    return walk.Take();
}

}  // namespace tool
