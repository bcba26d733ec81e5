#include "platform/vcard_folder.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "platform/collation.h"
#include "platform/file.h"
#include "platform/vcard.h"

namespace orvalo::platform {
namespace {

namespace fs = std::filesystem;

constexpr int kDeepestFolder = 32;
constexpr std::size_t kMostFiles = 100'000;
constexpr std::size_t kMostEntries = 500'000;
constexpr std::uint64_t kLargestVcardFile = 256u << 20;  // bytes; exports hold pictures

bool IsVcardFile(const fs::path& path) {
  const std::string extension = path.extension().string();
  return EqualNoCaseAscii(extension, ".vcf") || EqualNoCaseAscii(extension, ".vcard");
}

class VcardFolder : public AddressBook {
 public:
  // False when the folder cannot be listed.
  bool Read(const fs::path& folder) {
    entries_.emplace_back();
    if (!ReadFolder(folder, kRootContainer, 0)) return false;
    ResolveMembers();
    return true;
  }

  std::vector<HierarchyRow> Hierarchy(EntryId container) override {
    std::vector<HierarchyRow> rows;
    if (container >= entries_.size()) return rows;
    for (const EntryId id : entries_[container].below)
      if (entries_[id].kind == EntryKind::kContainer) rows.push_back({id, entries_[id].name});
    return rows;
  }

  std::vector<ContentsRow> Contents(EntryId container) override {
    std::vector<ContentsRow> rows;
    if (container >= entries_.size()) return rows;
    for (const EntryId id : entries_[container].below) {
      const Entry& entry = entries_[id];
      if (entry.kind == EntryKind::kContainer) continue;
      rows.push_back({entry.kind == EntryKind::kList ? Kind::kDistributionList : Kind::kMailUser,
                      id, entry.name, entry.mobile});
    }
    return rows;
  }

  std::vector<std::string> Problems() const override { return problems_; }

 private:
  enum class EntryKind { kContainer, kPerson, kList };
  struct Entry {
    EntryKind kind = EntryKind::kContainer;
    std::string name, mobile;
    std::vector<EntryId> below;
    std::vector<std::string> members;  // of a list, as written
  };

  EntryId Add(Entry entry) {
    entries_.push_back(std::move(entry));
    return static_cast<EntryId>(entries_.size() - 1);
  }

  EntryId AddContainer(std::string name) {
    return Add({EntryKind::kContainer, std::move(name), {}, {}, {}});
  }

  bool ReadFolder(const fs::path& folder, EntryId container, int depth) {
    std::error_code problem;
    // A link that leads back up would be read for ever.
    const fs::path real = fs::canonical(folder, problem);
    if (problem || std::find(open_.begin(), open_.end(), real) != open_.end()) return !problem;
    std::vector<fs::path> paths;
    for (fs::directory_iterator item(folder, problem), end; !problem && item != end;
         item.increment(problem))
      if (!item->path().filename().string().starts_with('.')) paths.push_back(item->path());
    if (problem) return false;
    std::sort(paths.begin(), paths.end(), [](const fs::path& a, const fs::path& b) {
      return CompareTexts(a.filename().string(), b.filename().string()) < 0;
    });
    open_.push_back(real);
    for (const fs::path& path : paths) ReadItem(path, container, depth);
    open_.pop_back();
    SortCards(container);
    return true;
  }

  void ReadItem(const fs::path& path, EntryId container, int depth) {
    if (IsFolder(path.string())) {
      if (depth >= kDeepestFolder) return;
      const EntryId folder = AddContainer(path.filename().string());
      entries_[container].below.push_back(folder);
      if (!ReadFolder(path, folder, depth + 1)) AddProblem(path, "cannot be read");
    } else if (IsVcardFile(path)) {
      ReadCards(path, container);
    }
  }

  void ReadCards(const fs::path& path, EntryId container) {
    if (++files_ > kMostFiles || entries_.size() >= kMostEntries)
      return AddProblem(path, "is not read: there are too many files or cards");
    std::optional<std::string> bytes = ReadFile(path.string(), kLargestVcardFile);
    if (!bytes) return AddProblem(path, "cannot be read, or is too large");
    std::vector<Vcard> cards = ParseVcards(std::move(*bytes));
    if (cards.empty()) return AddProblem(path, "holds no vCard");
    if (cards.size() > 1) {
      const EntryId file = AddContainer(path.stem().string());
      entries_[container].below.push_back(file);
      container = file;
    }
    entries_[container].below.reserve(entries_[container].below.size() + cards.size());
    for (Vcard& card : cards) AddCard(std::move(card), container);
  }

  void AddCard(Vcard card, EntryId container) {
    const EntryKind kind = card.is_group ? EntryKind::kList : EntryKind::kPerson;
    const EntryId id =
        Add({kind, std::move(card.name), std::move(card.mobile), {}, std::move(card.members)});
    entries_[container].below.push_back(id);
    if (!card.uid.empty()) by_uid_.emplace(std::move(card.uid), id);
    for (std::string& email : card.emails) by_email_.emplace(std::move(email), id);
  }

  // Sub-folders and files stand by name already; the cards that are files of their own do not.
  void SortCards(EntryId container) {
    std::vector<std::pair<std::string, EntryId>> rows;
    rows.reserve(entries_[container].below.size());
    for (const EntryId id : entries_[container].below)
      rows.emplace_back(
          entries_[id].kind == EntryKind::kContainer ? "" : SortKey(entries_[id].name), id);
    std::stable_sort(rows.begin(), rows.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::transform(rows.begin(), rows.end(), entries_[container].below.begin(),
                   [](const auto& row) { return row.second; });
  }

  void ResolveMembers() {
    const std::size_t count = entries_.size();
    for (std::size_t list = 0; list < count; ++list) {
      const std::vector<std::string> members = std::exchange(entries_[list].members, {});
      std::vector<EntryId> below;
      below.reserve(members.size());
      std::unordered_set<EntryId> taken;
      for (const std::string& member : members) {
        const EntryId id = Member(member);
        if (id != kNoEntry && taken.insert(id).second) below.push_back(id);
      }
      if (!below.empty()) entries_[list].below = std::move(below);
    }
  }

  // Who a member is: somebody of the book, or a bare number.
  EntryId Member(const std::string& reference) {
    const std::string lower = NormalUid(reference);
    if (const auto found = by_uid_.find(lower); found != by_uid_.end()) return found->second;
    if (lower.starts_with("mailto:")) {
      const auto found = by_email_.find(lower.substr(std::string_view("mailto:").size()));
      return found == by_email_.end() ? kNoEntry : found->second;
    }
    if (!lower.starts_with("tel:") || entries_.size() >= kMostEntries) return kNoEntry;
    const std::string number = NumberOf(reference);
    return Add({EntryKind::kPerson, number, number, {}, {}});
  }

  void AddProblem(const fs::path& path, const char* what) {
    constexpr std::size_t kMostProblems = 20;
    if (problems_.size() < kMostProblems) problems_.push_back(path.string() + " " + what);
  }

  std::vector<Entry> entries_;
  std::unordered_map<std::string, EntryId> by_uid_, by_email_;
  std::vector<fs::path> open_;  // the folders that are being read, without links
  std::size_t files_ = 0;
  std::vector<std::string> problems_;
};

}  // namespace

std::unique_ptr<AddressBook> OpenVcardFolder(const std::string& folder) {
  auto book = std::make_unique<VcardFolder>();
  if (!book->Read(folder)) return nullptr;
  return book;
}

}  // namespace orvalo::platform
