#pragma once
#include <QIcon>
#include <QString>
#include <string>

namespace orvalo {
class Texts;
}

namespace orvalo::ui {

class FileDialogs;
class FormLoader;
class Images;

// What every window is built with. All of it outlives the windows; main thread.
struct Kit {
  const FormLoader& forms;
  const Images& images;
  const Texts& texts;
  FileDialogs& files;
};

inline QString Qt8(const std::string& text) { return QString::fromStdString(text); }

}  // namespace orvalo::ui
