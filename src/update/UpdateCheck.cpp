#include "update/UpdateCheck.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "runtime/ErrorsIgnored.h"
#include "runtime/Maker.h"
#include "runtime/Numbers.h"
#include "runtime/Text.h"
#include "update/UpdateTexts.h"

namespace kestrelguard {

namespace {

namespace texts = updatetexts;

constexpr std::int32_t kWebPort = 80;
constexpr std::int32_t kUpdatePort = 26144;
constexpr std::int64_t kHour = 3600;

constexpr std::wstring_view kHeaderEnd = L"\r\n\r\n";
constexpr std::size_t kLengthDigits = 7;

/// The position, counted from 1, where the part begins; 0 when it is not there.
std::size_t PositionOf(std::wstring_view text, std::wstring_view part) {
    const std::size_t at = text.find(part);
    return at == std::wstring_view::npos ? 0 : at + 1;
}

/// The number that the digits at the text's beginning form. At most kLengthDigits characters.
std::int32_t LeadingDigits(std::wstring_view text) {
    std::int32_t number = 0;
    for (const wchar_t digit : text) {
        if (digit < L'0' || digit > L'9') {
            break;
        }
        number = number * 10 + (digit - L'0');
    }
    return number;
}

/// Whether the text looks like a version. Nothing else out of the network gets into a command line.
bool IsVersion(std::wstring_view text) {
    return !text.empty() && text.size() <= UpdateCheck::kShownVersion &&
           text.find_first_not_of(L"0123456789.") == std::wstring_view::npos;
}

}  // namespace

UpdateCheck::UpdateCheck(const Parts& parts, UpdateData data)
    : m_zev(parts.zev),
      m_zevPli(parts.ZEV_PLI),
      m_clock(parts.clock),
      m_locale(parts.locale),
      m_messages(parts.messages),
      m_boxes(parts.boxes),
      m_program(parts.program),
      m_data(std::move(data)) {}

void UpdateCheck::WinVersion(const WindowsVersionSource& system) {
    if (const std::optional<WindowsVersion> version = system.Version()) {
        m_data.windowsCode = WindowsCodeOf(*version, m_data.windowsCode);
    }
}

void UpdateCheck::DocumentComplete(const std::wstring& address) {
    if (!m_data.checkBusy && !m_data.updateOffered && Contains(address, L"http://")) {
        m_data.checkBusy = true;
        LookupUpdateServer();
    }
}

void UpdateCheck::LookupUpdateServer() {
    const std::int64_t now = m_clock.Now();
    if (now - m_data.lastLookupTime <= kHour) {
        m_data.checkBusy = false;
        return;
    }
    m_data.lastLookupTime = now;
    m_lookupAnswered = false;
    std::int32_t error = 0;
    ErrorsIgnored([&] { m_zev.SetRemoteHost(maker::kWebServer); },  //
                  [&] { m_zev.SetRemotePort(kWebPort); }, [&] { error = ErrorOf([&] { m_zev.Connect(); }); },
                  [&] {
                      if (error != 0) {
                          Abandon(m_zev);
                      }
                  },
                  [&] { m_messages.DoEvents(); });
}

void UpdateCheck::zev_Connect() {
    const std::wstring agent = texts::kUserAgent + m_data.versionText;
    std::wstring request;
    for (const std::wstring& line : {
             L"GET " + std::wstring(texts::kLookupPath) + L" HTTP/1.1",
             std::wstring(L"Accept: */*"),
             L"Host: " + std::wstring(maker::kWebServer),
             L"Referer: " + agent,
             L"User-Agent: " + agent,
             std::wstring(),
         }) {
        request += line + kLineEnd;
    }
    if (ErrorOf([&] { m_zev.SendData(request); }) != 0) {
        Abandon(m_zev);
    }
}

void UpdateCheck::zev_DataArrival(std::int32_t bytesTotal) {
    m_lookupAnswered = true;
    std::wstring chunk;
    ErrorsIgnored([&] { m_data.lookupBytes = CheckedAdd(m_data.lookupBytes, bytesTotal); });
    if (ErrorOf([&] { chunk = m_zev.GetData(); }) != 0) {
        Abandon(m_zev);
        return;
    }
    if (chunk.size() > kTolerance || m_data.lookupBuffer.size() > kTolerance - chunk.size()) {
        // A header or a body without end. Nothing more is collected; for the check this is a reply whose
        // count never matches.
        ErrorsIgnored([&] { m_zev.Close(); });
        return;
    }
    ErrorsIgnored([&] { ReadHeader(chunk); },  //
                  [&] { m_data.lookupBuffer += chunk; });
    // Kept: a count that overshoots never completes, and the check stays busy for the rest of the run.
    if (m_data.lookupBytes == m_data.lookupLength) {
        ErrorsIgnored([&] { m_zev.Close(); },  //
                      [&] { ParseLookupReply(); });
    }
}

void UpdateCheck::ReadHeader(const std::wstring& chunk) {
    // Kept: both are looked for in the chunk alone. A header that is split between the two counts as one
    // whose end lies at position 0; one that is split within the name of the length is not seen at all.
    constexpr std::wstring_view name = texts::kContentLength;
    const std::size_t at = chunk.find(name);
    if (at == std::wstring::npos) {
        return;
    }
    const std::wstring_view value = std::wstring_view(chunk).substr(at + name.size(), kLengthDigits);
    // Kept: when the header ends with the length, digits of the body may join it.
    m_data.lookupLength = LeadingDigits(Without(value, kLineEnd));
    const std::size_t headerBytes = PositionOf(chunk, kHeaderEnd) + 3;
    m_data.lookupBytes = CheckedSubtract(m_data.lookupBytes, static_cast<std::int32_t>(headerBytes));
}

void UpdateCheck::zev_Close() {
    // After part of a reply this is a count that never matches: busy for the rest of the run. Without any
    // reply the connection has failed.
    if (!m_lookupAnswered) {
        Abandon(m_zev);
    }
}

void UpdateCheck::ParseLookupReply() {
    if (Contains(LowerCase(m_data.lookupBuffer), texts::kNotFound)) {
        m_data.checkBusy = false;
        return;
    }
    // Without an end of the header the position is 0, and the text is taken from the fourth character on.
    const std::size_t begin = PositionOf(m_data.lookupBuffer, kHeaderEnd) + 4 - 1;
    const std::wstring_view reply = m_data.lookupBuffer;
    const std::wstring address = Without(reply.substr(std::min(begin, reply.size())), kLineEnd);
    m_data.updateServer = Trim(address);
    if (!m_data.updateOffered) {
        m_data.checkBusy = true;
        ConnectUpdateServer();
    }
}

void UpdateCheck::ConnectUpdateServer() {
    m_replyBytes = 0;
    std::int32_t error = 0;
    ErrorsIgnored([&] { m_zevPli.Close(); },
                  [&] {
                      m_zevPli.SetRemoteHost(m_data.useTestServer ? std::wstring(maker::kTestServer)
                                                                  : m_data.updateServer);
                  },
                  [&] { m_zevPli.SetRemotePort(kUpdatePort); },  //
                  [&] { m_zevPli.SetLocalPort(0); }, [&] { error = ErrorOf([&] { m_zevPli.Connect(); }); },
                  [&] {
                      if (error != 0) {
                          Abandon(m_zevPli);
                      }
                  });
}

void UpdateCheck::ZEV_PLI_Connect() {
    const std::int32_t error = ErrorOf([&] {
        std::wstring report = texts::kReportToken;
        for (const std::wstring& field : {
                 texts::kProductToken + m_data.versionText,
                 m_data.windowsCode,
                 m_zevPli.LocalHostName(),
                 m_locale.GeneralDateNow(),
                 Decimal(m_program.UseCount()),
                 m_zevPli.LocalIP(),
             }) {
            report += texts::kSeparator + field;
        }
        m_zevPli.SendData(report);
    });
    if (error != 0) {
        Abandon(m_zevPli);
    }
}

void UpdateCheck::ZEV_PLI_DataArrival(std::int32_t /*bytesTotal*/) {
    std::wstring reply;
    if (ErrorOf([&] { reply = m_zevPli.GetData(); }) != 0) {
        Abandon(m_zevPli);
        return;
    }
    m_replyBytes += reply.size();
    if (m_replyBytes > kTolerance) {
        ErrorsIgnored([&] { m_zevPli.Close(); });
    }
    // One reply ends all checking of this run; what follows it is read and dropped, so that nobody can pile
    // up notices. Any other answer is ignored, and the check stays busy.
    constexpr std::wstring_view token = texts::kReplyToken;
    static_assert(token.size() == 14);
    if (m_data.updateOffered || !reply.starts_with(token)) {
        return;
    }
    m_data.updateOffered = true;
    m_data.checkBusy = false;
    // Before the notice, which may stand for days.
    ErrorsIgnored([&] { m_program.WriteSettings(); });
    const std::wstring offered(Trim(std::wstring_view(reply).substr(token.size())));
    // Kept: compared as plain text, so that 2.0.99 is newer than 2.0.113.
    if (m_data.versionText < offered) {
        ErrorsIgnored([&] { Offer(offered); });
    }
}

void UpdateCheck::ZEV_PLI_Close() {
    if (m_replyBytes == 0) {
        Abandon(m_zevPli);
    }
}

void UpdateCheck::Offer(const std::wstring& offered) {
    const std::wstring question =
        texts::kQuestionBegin + offered.substr(0, kShownVersion) + texts::kQuestionEnd;
    const int answer = m_boxes.Show(std::wstring(texts::kNotice) + kLineEnd + kLineEnd + question,
                                    texts::kNoticeTitle, box_style::kNotice);
    // Kept: the box has no Yes button, so the updater is never started from here.
    if (answer == box_answer::kYes && IsVersion(offered)) {
        m_program.StartUpdater(L"/v" + offered + L" /t" + m_program.MainWindowText());
    }
}

void UpdateCheck::Abandon(Winsock& socket) {
    m_data.checkBusy = false;
    ErrorsIgnored([&] { socket.Close(); });
}

}  // namespace kestrelguard
