#include "cli/contact_arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "cli/address_book.h"
#include "cli/command.h"
#include "platform/code_page.h"

namespace orvalo::cli {

namespace {

CLI::Option* AddText(CLI::App& app, const std::string& flag, std::optional<std::string>* text,
                     const char* description, const char* type_name) {
  return app
      .add_option_function<std::string>(
          flag, [text](const std::string& value) { *text = value; }, description)
      ->type_name(type_name);
}

void CheckWidth(const char* what, const std::optional<std::string>& text, std::size_t width) {
  if (!text || platform::CountCharacters(*text) <= width) return;
  throw CommandError(ExitCode::kUsage,
                     std::string(what) + " has at most " + std::to_string(width) + " characters");
}

}  // namespace

void ContactArguments::Define(CLI::App& app, bool complete) {
  AddText(app, "--name", &name_, "First name", "N")->required(complete);
  AddText(app, "--surname", &surname_, "Surname", "S");
  AddText(app, "--title", &title_, "Title", "T");
  AddText(app, "--custom", &custom_, "A text of your own", "C");
  AddText(app, "--mobile", &mobile_, "Mobile number", "M")->required(complete);
  app.add_option("--group", groups_, "Group to belong to; may be repeated")
      ->type_name("NAME")
      ->allow_extra_args(false)
      ->required(complete);
}

void ContactArguments::Check() const {
  if (name_ && name_->find_first_not_of(' ') == std::string::npos)
    throw CommandError(ExitCode::kUsage, "The name is empty");
  if (mobile_ && !IsMobileNumber(*mobile_))
    throw CommandError(ExitCode::kUsage,
                       "The mobile number is none: 3 to 16 digits, \"+\" allowed");
  CheckWidth("A name", name_, kContactNameWidth);
  CheckWidth("A surname", surname_, kContactSurnameWidth);
  CheckWidth("A title", title_, kContactTitleWidth);
  CheckWidth("A custom text", custom_, kContactCustomWidth);
}

void ContactArguments::ApplyTo(ContactRecord* contact, SmsDatabase& database) const {
  if (name_) contact->name = *name_;
  if (surname_) contact->surname = *surname_;
  if (title_) contact->title = *title_;
  if (custom_) contact->custom = *custom_;
  if (mobile_) contact->mobile = *mobile_;
  if (groups_.empty()) return;
  contact->group_ids.clear();
  for (const std::string& name : groups_) {
    const std::int32_t gid = OwnGroupByName(database, name).gid;
    auto& ids = contact->group_ids;
    if (std::find(ids.begin(), ids.end(), gid) == ids.end()) ids.push_back(gid);
  }
}

}  // namespace orvalo::cli
