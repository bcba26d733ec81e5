#include "contacts/csv_import.h"

#include <optional>
#include <span>
#include <string_view>
#include <unordered_map>

#include "contacts/csv_reader.h"
#include "platform/collation.h"
#include "store/contact_loader.h"
#include "store/sms_database.h"

namespace orvalo {

namespace {

constexpr std::uint64_t kSmallFile = 64u << 10;  // bytes
constexpr std::uint64_t kBytesOfALine = 48;      // usually
constexpr std::uint32_t kLinesBetweenProgress = 512;

// The numbers of the address book, for asking about every line of a file.
class KnownMobiles {
 public:
  // A file of few lines is not worth reading the whole book for.
  KnownMobiles(SmsDatabase& database, bool few) : database_(database), few_(few) {
    if (!few_) database_.ForEachMobile([this](std::string_view mobile) { Add(mobile); });
  }

  // Whether the number is in the book; `mobile` is taken to be there from now on.
  bool HasOrAdd(std::string_view mobile) {
    return few_ ? database_.ContactExistsWithMobile(mobile) : !Add(mobile);
  }

 private:
  struct Slot {
    std::uint32_t hash;
    std::uint32_t size = kFree;
    std::size_t begin;  // in numbers_
  };
  static constexpr std::uint32_t kFree = UINT32_MAX;

  // False when it is there already.
  bool Add(std::string_view mobile) {
    if ((count_ + 1) * 2 > slots_.size()) Grow();
    const auto hash = static_cast<std::uint32_t>(std::hash<std::string_view>()(mobile));
    std::size_t slot = hash & (slots_.size() - 1);
    for (; slots_[slot].size != kFree; slot = (slot + 1) & (slots_.size() - 1)) {
      const Slot& other = slots_[slot];
      if (other.hash == hash &&
          std::string_view(numbers_).substr(other.begin, other.size) == mobile)
        return false;
    }
    slots_[slot] = {hash, static_cast<std::uint32_t>(mobile.size()), numbers_.size()};
    numbers_ += mobile;
    ++count_;
    return true;
  }
  void Grow() {
    const std::vector<Slot> old = std::move(slots_);
    slots_.assign(old.empty() ? 4096 : old.size() * 2, {});
    for (const Slot& filled : old) {
      if (filled.size == kFree) continue;
      std::size_t slot = filled.hash & (slots_.size() - 1);
      while (slots_[slot].size != kFree) slot = (slot + 1) & (slots_.size() - 1);
      slots_[slot] = filled;
    }
  }

  SmsDatabase& database_;
  const bool few_;
  std::string numbers_;      // one behind the other
  std::vector<Slot> slots_;  // a power of two of them, at most half of them filled
  std::size_t count_ = 0;
};

// The groups by their names, whatever their case; of those alike the first.
class GroupsByName {
 public:
  explicit GroupsByName(SmsDatabase& database) : database_(database) {
    const auto groups = database.AllGroups();
    if (!groups.empty()) all_contacts_ = groups.front().gid;
    for (const GroupRow& group : groups) gids_.emplace(platform::FoldCase(group.name), group.gid);
  }

  // Makes the group when there is none. Nothing for the group of every contact, which none joins.
  std::optional<std::int32_t> FindOrAdd(std::string_view name) {
    if (last_ == nullptr || last_name_ != name) {
      const auto [place, added] = gids_.try_emplace(platform::FoldCase(name), 0);
      if (added) place->second = database_.AddGroup(name).gid;
      last_ = &place->second;
      last_name_ = name;
    }
    if (*last_ == all_contacts_) return std::nullopt;
    return *last_;
  }

 private:
  SmsDatabase& database_;
  std::int32_t all_contacts_ = 0;
  std::unordered_map<std::string, std::int32_t> gids_;
  const std::int32_t* last_ = nullptr;  // lines of one group often follow each other
  std::string last_name_;
};

// One import, within its transaction.
class Importing {
 public:
  Importing(SmsDatabase& database, const CsvImportOrder& order, const ImportProgress& progress,
            CsvContactReader& reader, CsvImportResult& result)
      : order_(order),
        progress_(progress),
        reader_(reader),
        result_(result),
        mobiles_(database, !order.prevent_duplicates || reader.Size() < kSmallFile),
        groups_(database),
        loader_(database, reader.Size() / kBytesOfALine) {}

  // False when nothing is to be kept: it was cancelled, or found quoted fields.
  bool Run() {
    if (!ReadLines()) return false;
    loader_.Finish();
    return true;
  }

 private:
  bool ReadLines() {
    while (reader_.ReadRow()) {
      if (!GoesOn()) return false;
      TakeRow();
    }
    if (reader_.AtEnd()) return true;
    if (reader_.RefusedQuotes()) return false;
    Reject(RejectReason::kEndedImport);
    while (reader_.SkipLine()) {
      if (!GoesOn()) return false;
      Reject(RejectReason::kBehindTheEnd);
    }
    result_.rejected.DropBlankEnd();
    return true;
  }
  bool GoesOn() {
    if (lines_++ % kLinesBetweenProgress != 0 || !progress_) return true;
    return progress_(reader_.BytesRead(), reader_.Size());
  }
  void Reject(RejectReason reason) {
    result_.rejected.Add(reader_.LineNumber(), reason, reader_.Line());
  }
  void TakeRow() {
    if (reader_.HasOpenQuote()) {
      Reject(RejectReason::kOpenQuote);
      return;
    }
    const std::string_view mobile = reader_.Field(ColumnCode::kMobile);
    if (mobile.empty()) {
      ++result_.discarded;
      Reject(RejectReason::kNoMobile);
      return;
    }
    const std::string_view group = reader_.Field(ColumnCode::kGroup);
    std::optional<std::int32_t> own_group;
    if (order_.auto_create && !group.empty()) own_group = groups_.FindOrAdd(group);
    if (order_.prevent_duplicates && mobiles_.HasOrAdd(mobile)) {
      Reject(RejectReason::kDuplicate);
      return;
    }
    const ContactView contact{0,
                              reader_.Field(ColumnCode::kFirstName),
                              reader_.Field(ColumnCode::kSurname),
                              reader_.Field(ColumnCode::kTitle),
                              reader_.Field(ColumnCode::kCustom),
                              mobile};
    loader_.Add(contact, own_group ? std::span<const std::int32_t>(&*own_group, 1)
                                   : std::span<const std::int32_t>(order_.gids));
    ++result_.inserted;
  }

  const CsvImportOrder& order_;
  const ImportProgress& progress_;
  CsvContactReader& reader_;
  CsvImportResult& result_;
  KnownMobiles mobiles_;
  GroupsByName groups_;
  ContactLoader loader_;  // last: it may take the indices away that the others read by
  std::uint32_t lines_ = 0;
};

CsvImportResult NothingImported(CsvImportResult::End end, std::uint64_t line = 0) {
  CsvImportResult result;
  result.end = end;
  result.line = line;
  result.opened = true;
  return result;
}

}  // namespace

CsvImportResult ImportContacts(SmsDatabase& database, const CsvImportOrder& order,
                               const ImportProgress& progress) {
  using End = CsvImportResult::End;
  using Fault = TextLines::Fault;
  CsvContactReader reader(order.separator, order.path, order.quotes);
  CsvImportResult result;
  result.opened = reader.fault() != Fault::kNotOpened;
  result.valid_header = reader.IsValid();
  if (reader.IsValid()) {
    SmsDatabase::Transaction transaction(database);
    const bool keep = Importing(database, order, progress, reader, result).Run();
    if (!keep && !reader.RefusedQuotes()) return NothingImported(End::kCancelled);
    if (keep && reader.fault() == Fault::kNone) transaction.Commit();
  }
  if (reader.RefusedQuotes()) return NothingImported(End::kQuoted, reader.LineNumber());
  if (reader.fault() == Fault::kBinary) return NothingImported(End::kBinary);
  if (reader.fault() == Fault::kNul) return NothingImported(End::kNul, reader.FaultLine());
  if (reader.fault() == Fault::kUnreadable) return NothingImported(End::kUnreadable);
  return result;
}

}  // namespace orvalo
