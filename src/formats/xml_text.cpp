#include "formats/xml_text.h"

namespace qv {
namespace {

// Double quotes, or apostrophes around what holds a double quote itself.
void WriteQuoted(DataWriter& out, std::wstring_view text) {
    const char quote = text.find(L'"') == text.npos ? '"' : '\'';
    out.Append(quote);
    out.AppendUtf8(text);
    out.Append(quote);
}

}  // namespace

void WriteXMLInstruction(DataWriter& out, std::wstring_view data) {
    out.Append("<?xml ");
    out.AppendUtf8(data);
    out.Append("?>");
}

void WriteXMLComment(DataWriter& out, std::wstring_view text, HtmlCharSet charSet) {
    out.Append("<!--");
    out.AppendEscaped(text, charSet);
    out.Append("-->");
}

void WriteXMLText(DataWriter& out, std::wstring_view text) {
    out.AppendEscaped(text, HtmlCharSet::kLimited);
}

void WriteXMLTagStart(DataWriter& out, std::wstring_view name, HtmlCharSet charSet) {
    out.Append('<');
    out.AppendEscaped(name, charSet);
}

void WriteXMLAttribute(DataWriter& out, std::wstring_view name, std::wstring_view value,
                       HtmlCharSet charSet) {
    out.Append(' ');
    out.AppendEscaped(name, charSet);
    // The replacement leaves no double quote in the value, so it never needs apostrophes.
    out.Append("=\"");
    out.AppendEscaped(value, charSet);
    out.Append('"');
}

void WriteXMLTagEnd(DataWriter& out, XMLTagEnd end) {
    out.Append(end == XMLTagEnd::kEmpty ? "/>" : ">");
}

void WriteXMLEndTag(DataWriter& out, std::wstring_view name, HtmlCharSet charSet) {
    out.Append("</");
    out.AppendEscaped(name, charSet);
    out.Append('>');
}

void WriteXMLDocumentType(DataWriter& out, std::wstring_view name, std::optional<std::wstring_view> publicID,
                          std::optional<std::wstring_view> systemID) {
    out.Append("<!DOCTYPE ");
    out.AppendUtf8(name);
    if (publicID) {
        out.Append(" PUBLIC ");
        WriteQuoted(out, *publicID);
    } else if (systemID) {
        out.Append(" SYSTEM");
    }
    if (systemID) {
        out.Append(' ');
        WriteQuoted(out, *systemID);
    }
}

}  // namespace qv
