#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "cli/command.h"

namespace orvalo {
struct CsvImportResult;
}

namespace orvalo::cli {

// Reads contacts from a delimited text file: all lines that can be taken, or, when it is ended or
// the disk refuses, none.
class ImportCommand : public Command {
 public:
  ImportCommand();
  void Define(CLI::App& app) override;
  void Check() const override;
  Access AccessNeeded() const override { return Access::kChange; }
  ExitCode Execute(Context& context) override;

 private:
  void SaveRejects(const Context& context, const CsvImportResult& result) const;

  std::string file_;
  std::vector<std::string> groups_;
  std::string separator_ = "comma";
  std::string quotes_ = "refuse";
  std::string rejects_;
  bool auto_create_ = false;
  bool no_duplicates_ = false;
};

// Writes contacts to a comma-separated file that `import` reads back.
class ExportCommand : public Command {
 public:
  ExportCommand();
  void Define(CLI::App& app) override;
  void Check() const override;
  Access AccessNeeded() const override { return Access::kLook; }
  ExitCode Execute(Context& context) override;

 private:
  std::string file_;
  std::vector<std::string> groups_;
  std::vector<std::int32_t> cids_;
  bool with_group_ = false;
};

}  // namespace orvalo::cli
