// The keys under which the library registers its shared objects.
#pragma once

namespace qv {

inline constexpr wchar_t kNullKey[] = L"org.qvfoundation.QVFoundation.Null";
inline constexpr wchar_t kSharedFileManagerKey[] = L"org.qvfoundation.QVFoundation.SharedFileManager";
inline constexpr wchar_t kMIMECharSetNameKey[] = L"org.qvfoundation.QVFoundation.MIMECharSetName";
inline constexpr wchar_t kHTMLCharSetToKey[] = L"org.qvfoundation.QVFoundation.QVString.HTMLCharSetTo";
inline constexpr wchar_t kHTMLCharSetFromKey[] = L"org.qvfoundation.QVFoundation.QVString.HTMLCharSetFrom";
inline constexpr wchar_t kHTMLCharSetLimitedToKey[] =
    L"org.qvfoundation.QVFoundation.QVString.HTMLCharSetLimitedTo";
inline constexpr wchar_t kHTMLCharSetLimitedFromKey[] =
    L"org.qvfoundation.QVFoundation.QVString.HTMLCharSetLimitedFrom";

}  // namespace qv
