#pragma once
#include <QList>
#include <QString>
#include <QWidget>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/resource_container.h"

QT_BEGIN_NAMESPACE
class QAction;
class QMenu;
QT_END_NAMESPACE

namespace orvalo::ui {

// A dialog or menu that the resource container lacks, that does not parse, or that lacks a control
// the program needs. The window that wanted it does not open.
class FormError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Builds windows from the dialogs, menus and accelerators of one resource container, by number.
// Created by start-up, outlives every window; main thread. All controls are found by object name,
// so that a translated container may lay them out anew. With ORVALO_TEST_IDS in the environment
// each control carries its object name in its accessible description.
class FormLoader {
 public:
  using Factory = std::function<QWidget*(QWidget* parent)>;

  explicit FormLoader(const platform::ResourceContainer& container);
  ~FormLoader();
  FormLoader(const FormLoader&) = delete;
  FormLoader& operator=(const FormLoader&) = delete;

  // Makes a class of ours known to the dialogs, by the name it is promoted to there. SwitchBox is
  // known from the start.
  void Register(const std::string& class_name, Factory factory);

  // Loads "dialogs/<id>.ui" into `self`, which becomes the form's root. Throws FormError.
  void LoadInto(QWidget& self, int id) const;

  // "menus/<id>.json": [{"command": 32801, "text": "E&xit"}, {"separator": true}, ...]. The
  // actions carry their commands as data. Throws FormError.
  std::unique_ptr<QMenu> LoadMenu(int id, QWidget* owner) const;

  // "accelerators/<id>.json": [{"command": 57634, "key": "Ctrl+C"}, ...]: actions with shortcuts,
  // owned by and added to `owner`, carrying their commands as data. Throws FormError.
  QList<QAction*> LoadAccelerators(int id, QWidget& owner) const;

 private:
  class OwnClassesLoader;

  const platform::ResourceContainer& container_;
  std::map<std::string, Factory, std::less<>> classes_;
  std::unique_ptr<OwnClassesLoader> loader_;
};

// The control of that name inside a loaded form. Throws FormError when it is missing or of another
// class.
template <typename Control>
Control& Child(const QWidget& form, const char* name) {
  auto* control = form.findChild<Control*>(QString::fromLatin1(name));
  if (control == nullptr) {
    throw FormError("The dialog '" + form.objectName().toStdString() + "' lacks the control '" +
                    name + "'.");
  }
  return *control;
}

// Gives every control below `root` its object name as accessible description, when
// ORVALO_TEST_IDS asks for it. LoadInto has done so; for controls made in code.
void ShowTestIds(QWidget& root);

}  // namespace orvalo::ui
