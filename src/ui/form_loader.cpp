#include "ui/form_loader.h"

#include <QAction>
#include <QBuffer>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMenu>
#include <QUiLoader>
#include <QWidget>
#include <optional>
#include <utility>

#include "ui/switch_box.h"

namespace orvalo::ui {

// Knows our classes, and gives a form's root the object that asked for the form. One for all forms:
// making one looks for plugins on the disk.
class FormLoader::OwnClassesLoader : public QUiLoader {
 public:
  OwnClassesLoader(const std::map<std::string, Factory, std::less<>>& classes,
                   const QString& folder)
      : classes_(classes) {
    clearPluginPaths();  // no Designer plugin from the disk comes into the process
    setWorkingDirectory(QDir(folder));
  }

  bool LoadInto(QWidget& self, QIODevice& form) {
    self_ = &self;
    const bool loaded = load(&form, self.parentWidget()) == &self;
    self_ = nullptr;
    return loaded;
  }

  QWidget* createWidget(const QString& class_name, QWidget* parent, const QString& name) override {
    if (self_ != nullptr) {
      QWidget* root = std::exchange(self_, nullptr);
      root->setObjectName(name);
      return root;
    }
    const auto factory = classes_.find(class_name.toStdString());
    if (factory == classes_.end()) return QUiLoader::createWidget(class_name, parent, name);
    QWidget* widget = factory->second(parent);
    widget->setObjectName(name);
    return widget;
  }

 private:
  QWidget* self_ = nullptr;
  const std::map<std::string, Factory, std::less<>>& classes_;
};

namespace {

std::string ReadEntry(const platform::ResourceContainer& container, const std::string& path) {
  std::optional<std::string> bytes = container.Read(path);
  if (!bytes) throw FormError("The resource container lacks '" + path + "'.");
  return *std::move(bytes);
}

QJsonArray ReadList(const platform::ResourceContainer& container, const std::string& path) {
  QJsonParseError problem;
  const auto document =
      QJsonDocument::fromJson(QByteArray::fromStdString(ReadEntry(container, path)), &problem);
  if (!document.isArray()) {
    throw FormError("'" + path + "' is no list: " + problem.errorString().toStdString());
  }
  return document.array();
}

}  // namespace

FormLoader::FormLoader(const platform::ResourceContainer& container)
    : container_(container),
      loader_(std::make_unique<OwnClassesLoader>(
          classes_, QString::fromStdString(container.Root() + "/dialogs"))) {
  Register("SwitchBox", [](QWidget* parent) { return new SwitchBox(parent); });
}

FormLoader::~FormLoader() = default;

void FormLoader::Register(const std::string& class_name, Factory factory) {
  classes_[class_name] = std::move(factory);
}

void FormLoader::LoadInto(QWidget& self, int id) const {
  const std::string path = "dialogs/" + std::to_string(id) + ".ui";
  const std::string form = ReadEntry(container_, path);
  QByteArray bytes = QByteArray::fromStdString(form);
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::ReadOnly);
  if (!loader_->LoadInto(self, buffer)) {
    throw FormError("'" + path + "': " + loader_->errorString().toStdString());
  }
  ShowTestIds(self);
}

std::unique_ptr<QMenu> FormLoader::LoadMenu(int id, QWidget* owner) const {
  auto menu = std::make_unique<QMenu>(owner);
  menu->setObjectName(QStringLiteral("menu%1").arg(id));
  for (const QJsonValue& item : ReadList(container_, "menus/" + std::to_string(id) + ".json")) {
    if (item[QStringLiteral("separator")].toBool()) {
      menu->addSeparator();
      continue;
    }
    QAction* action = menu->addAction(item[QStringLiteral("text")].toString());
    action->setData(item[QStringLiteral("command")].toInt());
  }
  return menu;
}

QList<QAction*> FormLoader::LoadAccelerators(int id, QWidget& owner) const {
  QList<QAction*> actions;
  for (const QJsonValue& item :
       ReadList(container_, "accelerators/" + std::to_string(id) + ".json")) {
    auto* action = new QAction(&owner);
    action->setShortcut(QKeySequence(item[QStringLiteral("key")].toString()));
    action->setData(item[QStringLiteral("command")].toInt());
    owner.addAction(action);
    actions.append(action);
  }
  return actions;
}

void ShowTestIds(QWidget& root) {
  static const bool wanted = qEnvironmentVariableIsSet("ORVALO_TEST_IDS");
  if (!wanted) return;
  root.setAccessibleDescription(root.objectName());
  for (QWidget* control : root.findChildren<QWidget*>()) {
    if (!control->objectName().isEmpty()) {
      control->setAccessibleDescription(control->objectName());
    }
  }
}

}  // namespace orvalo::ui
