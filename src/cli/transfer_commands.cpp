#include "cli/transfer_commands.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <map>
#include <ostream>
#include <system_error>

#include "app/export_places.h"
#include "app/file_texts.h"
#include "app/startup/program.h"
#include "cli/address_book.h"
#include "cli/console_boxes.h"
#include "cli/error_output.h"
#include "cli/input_file.h"
#include "cli/json_output.h"
#include "cli/outcome_tally.h"
#include "contacts/csv_export.h"
#include "contacts/csv_import.h"

namespace orvalo::cli {

namespace {

const std::map<std::string, CsvQuotes> kQuotes{{"refuse", CsvQuotes::kRefuse},
                                               {"enclose", CsvQuotes::kEnclose},
                                               {"literal", CsvQuotes::kLiteral}};
const std::map<std::string, char> kSeparators{{"comma", ','}, {"semicolon", ';'}, {"tab", '\t'}};

// Each group once: a contact belongs to it once.
std::vector<std::int32_t> GidsOf(SmsDatabase& database, const std::vector<std::string>& names) {
  std::vector<std::int32_t> gids;
  gids.reserve(names.size());
  for (const std::string& name : names) {
    const std::int32_t gid = OwnGroupByName(database, name).gid;
    if (std::find(gids.begin(), gids.end(), gid) == gids.end()) gids.push_back(gid);
  }
  return gids;
}

// Ends the command when nothing could be imported.
void CheckImported(const std::string& file, const CsvImportResult& result) {
  using End = CsvImportResult::End;
  std::string reason;
  if (!result.opened) {
    reason = "cannot be opened";
  } else if (result.end == End::kBinary) {
    reason = "is no text file: save it as CSV";
  } else if (result.end == End::kNul) {
    reason = "holds a NUL byte in line " + std::to_string(result.line) +
             ", which no text does: save it as CSV";
  } else if (result.end == End::kQuoted) {
    reason = "has a field in quotation marks in line " + std::to_string(result.line) +
             ": say --quotes enclose to read such fields without them, as spreadsheets mean them, "
             "or --quotes literal to take the marks as text";
  } else if (result.end == End::kUnreadable) {
    reason = "cannot be read to its end";
  } else if (!result.valid_header) {
    reason = "has no column \"mobile\" in its first line (see --separator)";
  }
  if (!reason.empty()) {
    const bool input = file == kStandardInput;
    throw CommandError(ExitCode::kFailed,
                       (input ? "The standard input " : "\"" + file + "\" ") + reason);
  }
}

void PrintImported(const Context& context, const CsvImportResult& result) {
  const auto count = [&](RejectReason reason) { return result.rejected.Count(reason); };
  const std::size_t duplicates = count(RejectReason::kDuplicate);
  const std::size_t not_read =
      count(RejectReason::kEndedImport) + count(RejectReason::kBehindTheEnd);
  if (context.json) {
    JsonArray list(context.out);
    list.Add({{"Inserted", result.inserted},
              {"Discarded", result.discarded},
              {"Duplicates", duplicates},
              {"NotRead", not_read}});
    list.End();
    return;
  }
  context.out << "Imported " << Counted(static_cast<std::size_t>(result.inserted), "contact")
              << "; discarded " << result.discarded << " without a number; left out "
              << Counted(duplicates, "duplicate") << '\n';
  if (not_read > 0) {
    context.errors.Line("A line with too few fields ended the import: " +
                        Counted(not_read, "line was", "lines were") + " not read");
  }
}

}  // namespace

ImportCommand::ImportCommand() : Command("import", "Import contacts from a text file") {}

void ImportCommand::Define(CLI::App& app) {
  app.add_option(
         "FILE", file_,
         "A file with a header line, such as a spreadsheet saves as CSV; \"-\": the standard "
         "input")
      ->required();
  app.add_option("--group", groups_, "Group that the contacts join; may be repeated")
      ->type_name("NAME")
      ->allow_extra_args(false)
      ->required();
  app.add_option("--separator", separator_, "What stands between fields: comma, semicolon or tab")
      ->type_name("NAME")
      ->check(CLI::IsMember(kSeparators));
  app.add_option("--quotes", quotes_,
                 "Fields in quotation marks: refuse (the file is not imported), enclose (read "
                 "without them) or literal (the marks are text)")
      ->type_name("HOW")
      ->check(CLI::IsMember(kQuotes));
  app.add_flag("--auto-create", auto_create_,
               "A contact whose line names a group joins that one alone; missing groups are made");
  app.add_flag("--no-duplicates", no_duplicates_, "Leave out numbers that are there already");
  app.add_option("--rejects", rejects_, "Write the lines that were not taken to this file, and why")
      ->type_name("FILE");
}

void ImportCommand::Check() const {
  std::error_code none_there;
  if (!rejects_.empty() && std::filesystem::equivalent(file_, rejects_, none_there)) {
    throw CommandError(ExitCode::kUsage, "--rejects names the file that is to be imported");
  }
}

ExitCode ImportCommand::Execute(Context& context) {
  SmsDatabase& database = context.program.GetDatabase();
  const SeekableInput input(context, file_);
  const CsvImportOrder order{
      input.path(),   kSeparators.at(separator_), GidsOf(database, groups_), auto_create_,
      no_duplicates_, kQuotes.at(quotes_)};
  const auto result = ImportContacts(database, order, [&](std::uint64_t done, std::uint64_t size) {
    context.errors.Progress("Importing: " + std::to_string(size ? done * 100 / size : 100) + " %");
    return true;
  });
  context.errors.Progress({});
  CheckImported(file_, result);
  PrintImported(context, result);
  if (!rejects_.empty()) SaveRejects(context, result);
  return ExitCode::kDone;
}

void ImportCommand::SaveRejects(const Context& context, const CsvImportResult& result) const {
  const Texts& texts = context.program.GetTexts();
  const auto error = result.rejected.Save(rejects_, texts, context.program.GetExportPlaces());
  if (!error) return;
  throw CommandError(ExitCode::kFailed, WithReason("The contacts are imported, but \"" + rejects_ +
                                                       "\" cannot be written.",
                                                   error, texts));
}

ExportCommand::ExportCommand() : Command("export", "Export contacts to a text file") {}

void ExportCommand::Define(CLI::App& app) {
  app.add_option("FILE", file_, "The file to write; what is there is replaced")->required();
  app.add_option("--group", groups_, "Group whose members are exported; may be repeated")
      ->type_name("NAME")
      ->allow_extra_args(false);
  app.add_flag("--with-group", with_group_,
               "Name the group of each contact; who is in several comes once for each");
  app.add_option("--contact", cids_, "Contact to export; may be repeated")
      ->type_name("CID")
      ->allow_extra_args(false);
}

void ExportCommand::Check() const {
  if (groups_.empty() == cids_.empty())
    throw CommandError(ExitCode::kUsage, "Either --group or --contact says what to export");
  if (with_group_ && groups_.empty())
    throw CommandError(ExitCode::kUsage, "--with-group goes with --group");
}

ExitCode ExportCommand::Execute(Context& context) {
  SmsDatabase& database = context.program.GetDatabase();
  ConsoleBoxes boxes(context.errors);
  CsvExport writer(database, context.program.GetTexts(), boxes, context.program.GetExportPlaces());
  const auto gids = GidsOf(database, groups_);
  bool written = false;
  if (with_group_) {
    written = writer.WriteGroups(file_, gids);
  } else {
    for (const std::int32_t cid : cids_) ContactById(database, cid);
    const auto cids = groups_.empty() ? cids_ : writer.MembersOf(gids);
    if (cids.empty()) throw CommandError(ExitCode::kNothing, "These groups have no members");
    written = writer.WriteContacts(file_, cids);
  }
  if (!written) return ExitCode::kFailed;  // which was said
  if (context.json) PrintJson(context.out, {{"File", file_}});
  return ExitCode::kDone;
}

}  // namespace orvalo::cli
