// The text form of XML nodes: which bytes stand for which part. Knows no nodes; see QVXMLTree.h for the
// rules.
#pragma once

#include <optional>
#include <string_view>

#include "formats/data_writer.h"

namespace qv {

void WriteXMLInstruction(DataWriter& out, std::wstring_view data);
void WriteXMLComment(DataWriter& out, std::wstring_view text, HtmlCharSet charSet);
void WriteXMLText(DataWriter& out, std::wstring_view text);

// A start tag is its beginning, its attributes and its end.
void WriteXMLTagStart(DataWriter& out, std::wstring_view name, HtmlCharSet charSet);
void WriteXMLAttribute(DataWriter& out, std::wstring_view name, std::wstring_view value, HtmlCharSet charSet);
enum class XMLTagEnd { kOpen, kEmpty };
void WriteXMLTagEnd(DataWriter& out, XMLTagEnd end);
void WriteXMLEndTag(DataWriter& out, std::wstring_view name, HtmlCharSet charSet);

// A document type without its closing ">": children may come between, in brackets.
void WriteXMLDocumentType(DataWriter& out, std::wstring_view name, std::optional<std::wstring_view> publicID,
                          std::optional<std::wstring_view> systemID);

}  // namespace qv
