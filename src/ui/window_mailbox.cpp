#include "ui/window_mailbox.h"

#include <QCoreApplication>
#include <QEvent>

namespace orvalo::ui {

namespace {

class WindowMessage : public QEvent {
 public:
  WindowMessage(std::uint32_t number, std::int32_t first, std::int32_t second)
      : QEvent(Number()), message(number), wparam(first), lparam(second) {}

  static Type Number() {
    static const auto kNumber = static_cast<Type>(registerEventType());
    return kNumber;
  }

  const std::uint32_t message;
  const std::int32_t wparam, lparam;
};

}  // namespace

void WindowMailbox::Post(std::uint32_t message, std::int32_t wparam, std::int32_t lparam) {
  QCoreApplication::postEvent(this, new WindowMessage(message, wparam, lparam));
}

bool WindowMailbox::event(QEvent* event) {
  if (event->type() != WindowMessage::Number()) return QObject::event(event);
  const auto& message = static_cast<const WindowMessage&>(*event);
  if (handler_) handler_(message.message, message.wparam, message.lparam);
  return true;
}

}  // namespace orvalo::ui
