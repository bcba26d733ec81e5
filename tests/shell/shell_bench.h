#pragma once
#include <filesystem>
#include <string>
#include <vector>

#include "app/data_file.h"
#include "gateway/engine_bench.h"
#include "platform/shell.h"

namespace orvalo::test {

class RecordingShell : public platform::Shell {
 public:
  void OpenAddress(const std::string& address) override { opened.push_back(address); }
  std::vector<std::string> opened;
};

// What the pages meet: a scripted gateway with its account, settings and their file, a desktop.
struct ShellBench : EngineBench {
  DataFile data_file{folder.File("SMS.dat"), false};
  RecordingShell shell;

  // They cannot be saved any more.
  void PutInTheWayOfSettings() {
    std::filesystem::remove(folder.File("SMS.dat"));
    std::filesystem::create_directories(folder.File("SMS.dat/in the way"));
  }

  // The settings as the next start would find them.
  std::string Saved(std::string_view key) {
    AppSettings saved;
    saved.Load(DataFile(folder.File("SMS.dat"), false), true);
    return saved.AsText(*AppSettings::Find(key));
  }
};

}  // namespace orvalo::test
