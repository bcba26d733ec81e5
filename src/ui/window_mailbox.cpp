#include "ui/window_mailbox.h"

#include <QCoreApplication>
#include <QEvent>

namespace orvalo::ui {

namespace {

// Tells the mailbox that a message waits; the message itself goes through the mailbox's own queue.
QEvent::Type MessageWaits() {
  static const auto kType = static_cast<QEvent::Type>(QEvent::registerEventType());
  return kType;
}

}  // namespace

void WindowMailbox::Post(std::uint32_t message, std::int32_t wparam, std::int32_t lparam) {
  {
    const std::lock_guard lock(mutex_);
    waiting_.push_back({message, wparam, lparam});
  }
  QCoreApplication::postEvent(this, new QEvent(MessageWaits()));
}

bool WindowMailbox::event(QEvent* event) {
  if (event->type() != MessageWaits()) return QObject::event(event);
  Message next{};
  {
    const std::lock_guard lock(mutex_);
    next = waiting_.front();
    waiting_.pop_front();
  }
  if (handler_) handler_(next.message, next.wparam, next.lparam);
  return true;
}

}  // namespace orvalo::ui
