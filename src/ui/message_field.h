#pragma once
#include <QObject>
#include <QString>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>

#include "messages/compose_view.h"

QT_BEGIN_NAMESPACE
class QPlainTextEdit;
QT_END_NAMESPACE

namespace orvalo::ui {

// The compose page's text field: a limit for what is typed, positions in characters, and the two
// moments at which the page is told about the focus. Owned by the window; main thread.
class MessageField : public QObject {
 public:
  struct Events {
    // What the operator changed, or what the field made of a text that it cannot hold as it is
    // (line ends other than "\n").
    std::function<void(const std::string& text)> changed;
    std::function<void(std::size_t selection_start)> focus_lost;
    std::function<void()> focus_gained;
  };

  MessageField(QPlainTextEdit& edit, Events events);

  // While the field is hidden the text waits, as it is, until the field is shown.
  void Show(const std::string& text);
  void SetVisible(bool visible);
  void Insert(std::size_t position, const std::string& text);
  // Of what is typed, pasted or dropped; nothing: any length.
  void LimitTo(std::optional<std::size_t> characters) { limit_ = characters; }
  void SetCaret(std::size_t position);
  std::size_t SelectionStart() const;
  void Focus();
  bool HasFocus() const;
  void Run(EditCommand command);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QString Text() const;
  void Put(const QString& text);
  void TextChanged();
  void CutExcess();

  QPlainTextEdit& edit_;
  Events events_;
  std::optional<std::size_t> limit_;
  bool visible_ = true;
  std::optional<QString> waiting_;  // to be shown with the field
  std::size_t count_ = 0;           // characters before the change that is being reported
  bool own_change_ = false;         // made by the program
  bool away_ = false;               // the whole window lost the focus while the field had it
};

}  // namespace orvalo::ui
