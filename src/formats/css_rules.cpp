#include "formats/css_rules.h"

#include <algorithm>
#include <cwctype>
#include <utility>

namespace qv {
namespace {

using Text = std::wstring_view;

bool IsSpace(wchar_t character) {
    return std::iswspace(static_cast<wint_t>(character)) != 0;
}

wchar_t UpperCase(wchar_t character) {
    return static_cast<wchar_t>(std::towupper(static_cast<wint_t>(character)));
}

// Control characters stand between rules and are passed over. From U+00A0 on every character counts as
// printable, whatever the locale says, but for the two separators and the byte-order mark.
bool IsPrintable(wchar_t character) {
    const auto code = static_cast<char32_t>(character);
    if (code < 0xA0) return code >= 0x20 && code < 0x7F;
    return code != 0x2028 && code != 0x2029 && code != 0xFEFF;
}

// The sets are so small that a loop at hand beats any search.
bool IsOneOf(wchar_t character, Text set) {
    for (const wchar_t member : set) {
        if (character == member) return true;
    }
    return false;
}

Text Trimmed(Text text) {
    while (!text.empty() && IsSpace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && IsSpace(text.back()))
        text.remove_suffix(1);
    return text;
}

// Walks over a sheet from one position to the next.
class Scanner {
public:
    Scanner(Text sheet, std::size_t position) : sheet_(sheet), position_(position) {}

    [[nodiscard]] bool IsAtEnd() const { return position_ >= sheet_.size(); }
    [[nodiscard]] std::size_t Position() const { return position_; }
    [[nodiscard]] wchar_t Current() const { return sheet_[position_]; }
    void Advance() { ++position_; }

    [[nodiscard]] bool IsAtComment() const {
        return Current() == L'/' && position_ + 1 < sheet_.size() && sheet_[position_ + 1] == L'*';
    }
    // The end is searched from the opening slash itself, so a slash, a star and a slash are a whole comment.
    void SkipComment() {
        const std::size_t end = sheet_.find(L"*/", position_);
        position_ = end == sheet_.npos ? sheet_.size() : end + 2;
    }

    // Collects characters, without comments, until one of `delimiters` or the end; stops on the delimiter.
    Text CollectUntil(Text delimiters, CssRule& rule) {
        std::wstring collected;
        std::size_t runStart = position_;
        bool isWhole = true;
        while (!IsAtEnd() && !IsOneOf(Current(), delimiters)) {
            if (!IsAtComment()) {
                Advance();
                continue;
            }
            collected.append(sheet_, runStart, position_ - runStart);
            isWhole = false;
            SkipComment();
            runStart = position_;
        }
        const Text run = sheet_.substr(runStart, position_ - runStart);
        if (isWhole) return run;
        return rule.Keep(std::move(collected.append(run)));
    }

private:
    Text sheet_;
    std::size_t position_;
};

void SplitSelectors(Text text, std::vector<Text>& selectors) {
    constexpr Text kDelimiters = L" ,\t\r\n";
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find_first_of(kDelimiters, start), text.size());
        const Text piece = Trimmed(text.substr(start, end - start));
        if (!piece.empty()) selectors.push_back(piece);
        start = end + 1;
    }
}

// Answers whether the rule has a body. A ";" or "}" belongs to the last selector and means that there is
// none.
bool ParseSelector(Scanner& scanner, CssRule& rule) {
    Text text = scanner.CollectUntil(L"{;}", rule);
    const bool hasBody = scanner.IsAtEnd() || scanner.Current() == L'{';
    if (!hasBody) {
        const wchar_t end = scanner.Current();
        scanner.Advance();
        // In the sheet the end adjoins the text unless a comment was dropped.
        const bool adjoins = !text.empty() && text.data()[text.size()] == end;
        text = adjoins ? Text(text.data(), text.size() + 1) : rule.Keep(std::wstring(text) + end);
    }
    SplitSelectors(Trimmed(text), rule.selectors);
    return hasBody;
}

// Adds the next property; false when the rule has none left.
bool ParseProperty(Scanner& scanner, CssRule& rule) {
    const Text name = scanner.CollectUntil(L":}", rule);
    if (scanner.IsAtEnd()) return false;
    const bool hasValue = scanner.Current() == L':';
    scanner.Advance();
    if (!hasValue) return false;

    const Text value = scanner.CollectUntil(L";}", rule);
    if (scanner.IsAtEnd()) return false;
    const bool isLast = scanner.Current() == L'}';
    scanner.Advance();
    rule.properties.push_back({Trimmed(name), Trimmed(value)});
    return !isLast;
}

CssResult ParseRule(Text sheet, std::size_t start, CssRule& rule) {
    Scanner scanner(sheet, start);
    const bool hasBody = ParseSelector(scanner, rule);
    // White space and comments at the end of a sheet are no rule.
    if (scanner.IsAtEnd() && hasBody && rule.selectors.empty()) return CssResult::kNone;

    if (hasBody) {
        const std::optional<std::size_t> body = SkipToCssBody(sheet, scanner.Position());
        if (!body) return CssResult::kSyntaxError;
        scanner = Scanner(sheet, *body);
        // The rules inside a media block are found by the searches that follow.
        const bool isMedia = !rule.selectors.empty() && EqualIgnoringCase(rule.selectors.front(), L"@media");
        while (!isMedia && !scanner.IsAtEnd() && ParseProperty(scanner, rule)) {
        }
    }
    rule.start = start;
    rule.length = scanner.Position() - start;
    return CssResult::kFound;
}

}  // namespace

void CssRule::Clear() {
    start = length = 0;
    selectors.clear();
    properties.clear();
    kept_.clear();
}

Text CssRule::Keep(std::wstring text) {
    return kept_.emplace_back(std::move(text));
}

CssResult FindNextCssRule(Text sheet, std::size_t start, CssRule& rule) {
    rule.Clear();
    Scanner scanner(sheet, start);
    while (!scanner.IsAtEnd()) {
        if (!IsPrintable(scanner.Current())) {
            scanner.Advance();
        } else if (scanner.IsAtComment()) {
            scanner.SkipComment();
        } else {
            return ParseRule(sheet, scanner.Position(), rule);
        }
    }
    return CssResult::kNone;
}

std::optional<std::size_t> SkipToCssBody(Text sheet, std::size_t position) {
    Scanner scanner(sheet, position);
    while (!scanner.IsAtEnd()) {
        if (scanner.IsAtComment()) {
            scanner.SkipComment();
        } else if (IsSpace(scanner.Current())) {
            scanner.Advance();
        } else if (scanner.Current() == L'{') {
            return scanner.Position() + 1;
        } else {
            return std::nullopt;
        }
    }
    return scanner.Position();
}

bool EqualIgnoringCase(Text a, Text b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](wchar_t x, wchar_t y) {
               return x == y || UpperCase(x) == UpperCase(y);
           });
}

}  // namespace qv
