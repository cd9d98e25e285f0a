#include "member_index.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <string_view>
#include <unordered_map>

#include "tool.h"

namespace tool {

namespace {

constexpr std::string_view kFirstLine = "qvtool member index 1\n";

std::optional<std::string> Unescaped(std::string_view text) {
    std::string name;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            name += text[i];
            continue;
        }
        unsigned byte = 0;
        const char* digits = text.data() + i + 1;
        if (text.size() - i < 4 || std::from_chars(digits, digits + 3, byte, 8).ptr != digits + 3 ||
            byte > 0xFF) {
            return std::nullopt;
        }
        name += static_cast<char>(byte);
        i += 3;
    }
    return name;
}

// Takes the number and the blank behind it off the front of the line.
template <class Number>
bool TakeNumber(std::string_view& line, Number& number, int base) {
    const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), number, base);
    if (error != std::errc() || end == line.data() + line.size() || *end != ' ') {
        return false;
    }
    line.remove_prefix(static_cast<std::size_t>(end - line.data()) + 1);
    return true;
}

std::optional<Member> DecodeLine(std::string_view line) {
    Member member;
    if (!TakeNumber(line, member.id, 10) || line.size() < 2 || (line[0] != 'S' && line[0] != 'C') ||
        line[1] != ' ') {
        return std::nullopt;
    }
    member.compressed = line[0] == 'C';
    line.remove_prefix(2);
    if (!TakeNumber(line, member.mode, 8) || !TakeNumber(line, member.size, 10)) {
        return std::nullopt;
    }
    std::optional<std::string> name = Unescaped(line);
    if (!name || name->empty()) {
        return std::nullopt;
    }
    member.name = std::move(*name);
    return member;
}

// An index fits when each of its members is a file item of its own, and a stored one has the size it tells.
bool Fits(const std::vector<Member>& members, const ArchiveReader& archive) {
    std::unordered_map<std::uint32_t, const ArchiveItem*> files;
    for (const ArchiveItem& item : archive.Items()) {
        if (item.type == ArchiveItem::kFile) {
            files.emplace(item.id, &item);
        }
    }
    return std::all_of(members.begin(), members.end(), [&](const Member& member) {
        const auto found = files.find(member.id);
        if (found == files.end()) {
            return false;
        }
        const bool right = member.compressed || found->second->bodyLength == member.size;
        files.erase(found);
        return right;
    });
}

}  // namespace

std::string EncodeMemberIndex(const std::vector<Member>& members) {
    std::string text(kFirstLine);
    for (const Member& member : members) {
        char numbers[64];
        std::snprintf(numbers, sizeof numbers, "%lu %c %o %llu ", static_cast<unsigned long>(member.id),
                      member.compressed ? 'C' : 'S', member.mode,
                      static_cast<unsigned long long>(member.size));
        text += numbers + OneLine(member.name) + "\n";
    }
    return text;
}

std::optional<std::vector<Member>> DecodeMemberIndex(const std::string& text) {
    std::string_view rest = text;
    if (rest.substr(0, kFirstLine.size()) != kFirstLine) {
        return std::nullopt;
    }
    rest.remove_prefix(kFirstLine.size());
    std::vector<Member> members;
    while (!rest.empty()) {
        const std::size_t end = rest.find('\n');
        std::optional<Member> member =
            end == std::string_view::npos ? std::nullopt : DecodeLine(rest.substr(0, end));
        if (!member) {
            return std::nullopt;
        }
        members.push_back(std::move(*member));
        rest.remove_prefix(end + 1);
    }
    return members;
}

std::optional<FoundIndex> FindMemberIndex(const ArchiveReader& archive) {
    const std::vector<ArchiveItem>& items = archive.Items();
    if (items.empty() || items.back().type != ArchiveItem::kFile ||
        items.back().bodyLength < kFirstLine.size()) {
        return std::nullopt;
    }
    const ArchiveItem& last = items.back();
    // A file that a directory names is a member, whatever its bytes look like.
    for (const ArchiveItem& item : items) {
        if (std::find(item.entries.begin(), item.entries.end(), last.id) != item.entries.end()) {
            return std::nullopt;
        }
    }
    // The first line decides before a large body is read into memory.
    std::string text(kFirstLine.size(), '\0');
    archive.ReadAt(last.BodyOffset(), text.data(), text.size());
    if (text != kFirstLine) {
        return std::nullopt;
    }
    text.resize(MemorySize(last.bodyLength));
    archive.ReadAt(last.BodyOffset(), text.data(), text.size());
    std::optional<std::vector<Member>> members = DecodeMemberIndex(text);
    if (!members || !Fits(*members, archive)) {
        return std::nullopt;
    }
    return FoundIndex{std::move(*members), last.id};
}

}  // namespace tool
