#include "ui/qt_texts.h"

#include <QCoreApplication>
#include <algorithm>
#include <array>
#include <string_view>

#include "app/texts.h"

namespace orvalo::ui {

namespace {

constexpr int kFirstId = 2016;
constexpr int kLastId = 2149;

// Where Qt's words come from. Texts of our own dialogs pass through here too, and are in the right
// language already.
constexpr std::array<std::string_view, 9> kContexts{"QAbstractFileIconProvider",
                                                    "QFileDialog",
                                                    "QFileSystemModel",
                                                    "QGnomeTheme",
                                                    "QLineEdit",
                                                    "QPlatformTheme",
                                                    "QScrollBar",
                                                    "QShortcut",
                                                    "QWidgetTextControl"};

}  // namespace

QtTexts::QtTexts(const Texts& texts) : texts_(texts) {
  const Texts own;
  for (int id = kFirstId; id <= kLastId; ++id)
    if (std::string text = own.LoadOrEmpty(id); !text.empty()) ids_.emplace(std::move(text), id);
  QCoreApplication::installTranslator(this);
}

QtTexts::~QtTexts() { QCoreApplication::removeTranslator(this); }

QString QtTexts::translate(const char* context, const char* source, const char*, int) const {
  if (context == nullptr || source == nullptr ||
      std::find(kContexts.begin(), kContexts.end(), context) == kContexts.end())
    return {};
  auto found = ids_.find(std::string_view(source));
  // Some desktops have access keys where the others have none: "&OK".
  if (found == ids_.end() && *source == '&') found = ids_.find(std::string_view(source + 1));
  if (found == ids_.end()) return {};
  const std::string text = texts_.LoadOrEmpty(found->second);
  return text.empty() ? QString() : QString::fromStdString(text);
}

}  // namespace orvalo::ui
