#pragma once

namespace orvalo::component {

// What smsERROR tells. The codes of the protocol (docs/gateway-protocol.md) come through as they
// are; those below 100 never travel and say why there is no usable reply. The client knows the
// numbers: they never change.
inline constexpr int kSuccess = 0;
inline constexpr int kProxyUnreachable = 95;
inline constexpr int kProxyRefuses = 96;
inline constexpr int kNotUnderstood = 98;
inline constexpr int kServiceUnreachable = 99;
inline constexpr int kMalformed = 101;
inline constexpr int kNoSuchCall = 102;
inline constexpr int kNoSuchMethod = 105;
inline constexpr int kNoSession = 111;
inline constexpr int kTooManyRequests = 113;
inline constexpr int kNoSuchMessage = 205;
inline constexpr int kBatchEnded = 207;
inline constexpr int kNoSuchSubmission = 209;
inline constexpr int kServiceFailed = 500;
inline constexpr int kNetworkUnavailable = 503;

}  // namespace orvalo::component
