// Scanning style sheets: finds the next rule of a text and cuts it into its parts. Knows no objects.
#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qv {

// The parts of one rule. They are views into the sheet or, where comments were dropped, into storage of the
// rule.
class CssRule {
public:
    struct Property {
        std::wstring_view name;
        std::wstring_view value;
    };

    std::size_t start = 0;
    std::size_t length = 0;
    std::vector<std::wstring_view> selectors;
    std::vector<Property> properties;

    // Forgets everything, for the next rule.
    void Clear();
    // Keeps a text that has no place in the sheet.
    std::wstring_view Keep(std::wstring text);

private:
    std::deque<std::wstring> kept_;
};

enum class CssResult { kFound, kNone, kSyntaxError };

// Parses the next rule at or after `start`. Throws std::bad_alloc.
[[nodiscard]] CssResult FindNextCssRule(std::wstring_view sheet, std::size_t start, CssRule& rule);

// Where a rule's body begins, behind its "{", when it is preceded by white space and comments alone; nothing
// when another character comes first. The end of the text counts as the body's beginning.
[[nodiscard]] std::optional<std::size_t> SkipToCssBody(std::wstring_view sheet, std::size_t position);

// Equality that ignores case as the C library maps it.
[[nodiscard]] bool EqualIgnoringCase(std::wstring_view a, std::wstring_view b);

}  // namespace qv
