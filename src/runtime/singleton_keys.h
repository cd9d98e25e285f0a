// The keys under which the library registers its shared objects.
#pragma once

namespace qv {

inline constexpr wchar_t kNullKey[] = L"org.qvfoundation.QVFoundation.Null";
inline constexpr wchar_t kSharedFileManagerKey[] = L"org.qvfoundation.QVFoundation.SharedFileManager";
inline constexpr wchar_t kMIMECharSetNameKey[] = L"org.qvfoundation.QVFoundation.MIMECharSetName";

}  // namespace qv
