#include "gateway/engine_notices.h"

#include <utility>

namespace orvalo {

void EngineNotices::SetMainWindow(platform::Mailbox* window) {
  std::lock_guard guard(mutex_);
  main_window_ = window;
}

void EngineNotices::SetOptionsPage(platform::Mailbox* page) {
  std::lock_guard guard(mutex_);
  options_page_ = page;
}

void EngineNotices::SetOutboxView(OutboxView* view) {
  std::lock_guard guard(mutex_);
  outbox_view_ = view;
}

void EngineNotices::ToMainWindow(std::uint32_t message, std::int32_t wparam, std::int32_t lparam) {
  if (Stopping()) return;
  std::lock_guard guard(mutex_);
  if (main_window_ != nullptr) main_window_->Post(message, wparam, lparam);
}

void EngineNotices::TellOutbox(std::int32_t id) {
  if (Stopping()) return;
  std::lock_guard guard(mutex_);
  if (outbox_view_ != nullptr) outbox_view_->MessageInHand(id);
}

void EngineNotices::GoOffline() {
  std::lock_guard guard(mutex_);
  if (options_page_ != nullptr) options_page_->Post(kWmGoOffline, 0, 0);
}

void EngineNotices::Offline() {
  std::lock_guard guard(mutex_);
  if (main_window_ != nullptr) main_window_->Post(kWmOffline, 0, 0);
}

void EngineNotices::StoreRefused(const std::string& why) {
  std::lock_guard guard(mutex_);
  refused_in_round_ = true;
  if (std::exchange(store_refuses_, true)) return;
  store_problem_ = why;
  if (main_window_ != nullptr) main_window_->Post(kWmStoreRefused, 0, 0);
}

void EngineNotices::StoreRoundEnds() {
  std::lock_guard guard(mutex_);
  store_refuses_ = std::exchange(refused_in_round_, false);
}

bool EngineNotices::IsStoreRefusing() const {
  std::lock_guard guard(mutex_);
  return store_refuses_;
}

std::string EngineNotices::TakeStoreProblem() {
  std::lock_guard guard(mutex_);
  return std::exchange(store_problem_, std::string());
}

void EngineNotices::QueryFailed(const std::string& text) {
  {
    std::lock_guard guard(mutex_);
    query_problem_ = text;
  }
  ToMainWindow(kWmQueryFailed);
}

std::string EngineNotices::TakeQueryProblem() {
  std::lock_guard guard(mutex_);
  return std::exchange(query_problem_, std::string());
}

void EngineNotices::SendingWaits(const std::string& why) {
  {
    std::lock_guard guard(mutex_);
    if (std::exchange(sending_waits_, true)) return;
    waiting_reason_ = why;
  }
  ToMainWindow(kWmSendingWaits);
}

void EngineNotices::SendingGoesOn() {
  std::lock_guard guard(mutex_);
  sending_waits_ = false;
}

std::string EngineNotices::TakeWaitingReason() {
  std::lock_guard guard(mutex_);
  return std::exchange(waiting_reason_, std::string());
}

}  // namespace orvalo
