#pragma once
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "ui/file_dialogs.h"

namespace orvalo::test {

// Answers from a script; gives up when the script has run out.
class ScriptedFileDialogs : public ui::FileDialogs {
 public:
  std::optional<std::string> PickFile(QWidget*, const std::string&, const std::string&) override {
    return Next();
  }
  std::optional<std::string> PickFileToSave(QWidget*, const std::string& default_name,
                                            const std::string&, const std::string&) override {
    names.push_back(default_name);
    return Next();
  }

  std::deque<std::optional<std::string>> answers;
  std::vector<std::string> names;  // that were proposed

 private:
  std::optional<std::string> Next() {
    if (answers.empty()) return std::nullopt;
    auto answer = answers.front();
    answers.pop_front();
    return answer;
  }
};

}  // namespace orvalo::test
