#pragma once
#include <QString>
#include <QWidget>
#include <optional>
#include <string>

namespace orvalo::ui {

// The desktop's dialogs that pick a file. Main thread; a test answers from a script. `filter` is a
// list of "name\npattern\n" pairs that may end in an empty line; `pattern` is the one wanted first
// ("*.txt"). Nothing when the operator gave up.
class FileDialogs {
 public:
  virtual ~FileDialogs() = default;
  virtual std::optional<std::string> PickFile(QWidget* owner, const std::string& pattern,
                                              const std::string& filter) = 0;
  virtual std::optional<std::string> PickFileToSave(QWidget* owner, const std::string& default_name,
                                                    const std::string& filter,
                                                    const std::string& pattern) = 0;
};

// The real ones. They begin in the user's folder for documents, later where the last file was.
class SystemFileDialogs : public FileDialogs {
 public:
  std::optional<std::string> PickFile(QWidget* owner, const std::string& pattern,
                                      const std::string& filter) override;
  std::optional<std::string> PickFileToSave(QWidget* owner, const std::string& default_name,
                                            const std::string& filter,
                                            const std::string& pattern) override;

 private:
  std::optional<std::string> Answer(const QString& path);
  QString Start(const std::string& name) const;

  QString last_folder_;
};

}  // namespace orvalo::ui
