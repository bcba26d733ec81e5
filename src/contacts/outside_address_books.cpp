#include "contacts/outside_address_books.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "app/log_file.h"
#include "app/settings.h"
#include "app/texts.h"
#include "contacts/address_walk.h"
#include "platform/file.h"
#include "platform/ldap_session.h"
#include "platform/machine_config.h"
#include "platform/message_box.h"
#include "platform/vcard_folder.h"

namespace orvalo {

namespace {

constexpr int kCannotAccessCaptionId = 1504;
constexpr int kNoDirectoryTextId = 1505;
constexpr int kNoFolderTextId = 1506;
constexpr char kProfileFile[] = "ldap-profiles.conf";

}  // namespace

OutsideAddressBooks::Places OutsideAddressBooks::PlacesOf(const std::string& data_folder) {
  Places places;
  places.profile_files = platform::ConfigFiles(kProfileFile);
  places.profile_files.insert(places.profile_files.begin(), data_folder + "/" + kProfileFile);
  places.vcard_folders.push_back(data_folder + "/vCards");
  const std::string user_data = platform::UserDataFolder();
  if (!user_data.empty()) places.vcard_folders.push_back(user_data + "/contacts");
  return places;
}

OutsideAddressBooks::OutsideAddressBooks(AppSettings& settings, const Texts& texts,
                                         platform::MessageBoxes& boxes, Log* log, Places places)
    : settings_(settings), texts_(texts), boxes_(boxes), log_(log), places_(std::move(places)) {}

OutsideAddressBooks::~OutsideAddressBooks() = default;

bool OutsideAddressBooks::Walk(AddressBookKind kind, AddressTree& tree) {
  problems_.clear();
  return kind == AddressBookKind::kMapi ? WalkDirectory(tree) : WalkFolder(tree);
}

void OutsideAddressBooks::CloseAddressBookSession() { session_.reset(); }

bool OutsideAddressBooks::WalkDirectory(AddressTree& tree) {
  LogOn();
  if (session_ == nullptr) return false;
  std::string problem;
  const auto book = session_->OpenAddressBook(&problem);
  if (book == nullptr) {
    AddProblem(std::move(problem));
    ShowCannotOpen(kNoDirectoryTextId);
    return false;
  }
  WalkBook(*book, tree);
  return true;
}

bool OutsideAddressBooks::WalkFolder(AddressTree& tree) {
  const auto folder =
      std::find_if(places_.vcard_folders.begin(), places_.vcard_folders.end(), &platform::IsFolder);
  if (folder == places_.vcard_folders.end()) {
    AddProblem("There is no folder of vCard files");
    return false;
  }
  const auto book = platform::OpenVcardFolder(*folder);
  if (book == nullptr) {
    AddProblem("The folder " + *folder + " cannot be read");
    ShowCannotOpen(kNoFolderTextId);
    return false;
  }
  WalkBook(*book, tree);
  return true;
}

void OutsideAddressBooks::WalkBook(platform::AddressBook& book, AddressTree& tree) {
  AddressWalk walk(book, tree);
  walk.Walk();
  for (std::string& problem : book.Problems()) AddProblem(std::move(problem));
  if (walk.WasCut()) AddProblem("The address book is too large or too deep to be shown whole");
}

// With name and password as they are set; if that fails, again without the password, and with the
// default profile in the place of one that is not to be had.
void OutsideAddressBooks::LogOn() {
  const std::string name = settings_.Text(TextSetting::kOutlookName);
  const std::string password = settings_.Text(TextSetting::kOutlookPassword);
  const platform::LdapProfiles profiles(places_.profile_files);
  std::string problem;
  auto profile = name.empty() ? profiles.Default(&problem) : profiles.Find(name, &problem);
  if (profile != session_profile_ || password != session_password_) CloseAddressBookSession();
  if (session_ == nullptr) {
    bool refused = !profile && !name.empty();
    if (profile) {
      TryProfile(*profile, password, &refused);
    } else {
      AddProblem(problem);
    }
    if (session_ == nullptr && refused) {
      if (!profile) profile = profiles.Default(&problem);
      if (profile) TryProfile(*profile, "", &refused);
    }
    if (session_ == nullptr) return;
    session_profile_ = profile->is_address ? session_->Profile() : *profile;
    session_password_ = password;
  }
  settings_.SetText(TextSetting::kOutlookName, session_->Profile().name);
}

// `refused`: there is a server that might take somebody else.
void OutsideAddressBooks::TryProfile(const platform::LdapProfile& profile,
                                     const std::string& password, bool* refused) {
  platform::LdapResult failure;
  session_ = platform::LdapSession::LogOn(profile, password, &failure);
  *refused = failure.end == platform::LdapEnd::kRefused && !password.empty();
  if (session_ == nullptr) AddProblem(profile.name + ": " + failure.text);
}

void OutsideAddressBooks::AddProblem(std::string problem) {
  if (log_ != nullptr && log_->Enabled()) log_->Write("Address book: %s", problem.c_str());
  problems_.push_back(std::move(problem));
}

void OutsideAddressBooks::ShowCannotOpen(int text_id) {
  boxes_.Show(texts_.Load(text_id), texts_.Load(kCannotAccessCaptionId), platform::BoxIcon::kStop);
}

}  // namespace orvalo
