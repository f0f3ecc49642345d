#pragma once

#include <cstdint>
#include <string>

#include "runtime/RunTimeError.h"

namespace kestrelguard {

/// The socket control's own error numbers. Those of the network are the platform's (10004 to 11004).
namespace winsock_errors {
inline constexpr std::int32_t kInvalidPropertyValue = 380;
/// The connection is not in the state that the operation needs.
inline constexpr std::int32_t kBadState = 40006;
inline constexpr std::int32_t kInvalidArgument = 40014;
/// The control is busy with a connection.
inline constexpr std::int32_t kInvalidOperation = 40020;
}  // namespace winsock_errors

/// What a socket error says to the user.
std::wstring WinsockErrorText(std::int32_t number);

/// The run-time error of a socket error.
RunTimeError WinsockError(std::int32_t number);

}  // namespace kestrelguard
