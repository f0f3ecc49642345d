#pragma once

/// Texts of the update check: all that the user sees, and the names in what goes over the network.
namespace kestrelguard::updatetexts {

inline constexpr wchar_t kNoticeTitle[] = L"Kestrelguard Update Available!";
inline constexpr wchar_t kNotice[] = L"There is a newer version of Kestrelguard available.";
inline constexpr wchar_t kQuestionBegin[] = L"Update to version ";
inline constexpr wchar_t kQuestionEnd[] = L" Now?";

inline constexpr wchar_t kLookupPath[] = L"/kg/login/ZEVkg.htm";
inline constexpr wchar_t kUserAgent[] = L"Kestrelguard v";
inline constexpr wchar_t kContentLength[] = L"Content-Length: ";
inline constexpr wchar_t kNotFound[] = L"404 not found";

inline constexpr wchar_t kSeparator[] = L":'/|";
inline constexpr wchar_t kReportToken[] = L"ZEV_PRODAI";
inline constexpr wchar_t kProductToken[] = L"KSG";
inline constexpr wchar_t kReplyToken[] = L":'/|ZEV_PRODLI";

}  // namespace kestrelguard::updatetexts
