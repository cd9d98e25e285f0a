#include "fuzz_support.h"
#include "targets.h"

// The elements must lie behind one another inside the sheet.
void qvfuzz::CssParser(const std::uint8_t* bytes, std::size_t size) {
    Scope scope;
    void* sheet = scope.Keep(QVStringCreateWithCStringAndLength(reinterpret_cast<const char*>(bytes), size));
    void* parser = scope.Keep(QVCSSParserCreateWithString(sheet));
    unsigned int end = 0;
    for (;;) {
        const Scope inner;
        unsigned int start = 0;
        unsigned int length = 0;
        void* element = QVCSSParserFindNextCSSElement(parser, end, &start, &length, nullptr);
        if (element == nullptr) break;
        Check(start >= end && length > 0, "an element does not move forward");
        Check(start + length <= QVStringGetLength(sheet), "an element ends behind the sheet");
        (void)QVCSSElementGetString(element);
        end = start + length;
    }
}
