#pragma once
#include <cstdint>
#include <deque>
#include <vector>

namespace orvalo {

inline constexpr std::int32_t kEveryMessage = -1;  // in place of a message id: all that qualify

// Message ids handed to the engine by a command.
struct IdList {
  bool go_offline =
      false;  // the program went online for this command only and is to go offline after it
  std::vector<std::int32_t> ids;
};

// The commands by which a page hands messages to the engine; implemented by SendEngine. Main
// thread.
class EngineCommands {
 public:
  virtual ~EngineCommands() = default;
  // Hand ids to the worker: messages to send, messages to ask about. Offline both do nothing.
  virtual void RequestSend(IdList list) = 0;
  virtual void RequestQuery(IdList list) = 0;
};

// Kinds of work; the values never change.
enum class RequestKind : std::int32_t {
  kSendOne = 1,
  kSendList = 2,
  kQueryOne = 3,
  kQueryList = 4
};

struct EngineRequest {
  RequestKind kind = RequestKind::kSendOne;
  std::int32_t id = kEveryMessage;  // of the "one" kinds
  IdList list;                      // of the "list" kinds
};

}  // namespace orvalo
