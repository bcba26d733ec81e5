#include "messages/text_order.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "platform/code_page.h"
#include "platform/collation.h"

namespace orvalo {

namespace {

// Placing a row among a million others reads twenty of them; past this share sorting all is faster.
constexpr std::size_t kRowsForOneChange = 512;
constexpr std::size_t kFewRows = 256;  // so few are always placed
constexpr std::size_t kMemoryOfKeys = 1024;

std::string KeyOf(std::string_view text) {
  if (text.size() > TextOrder::kComparedCharacters)
    text = platform::FirstCharacters(text, TextOrder::kComparedCharacters);
  return platform::SortKey(text);
}

}  // namespace

// Sort keys of many rows in one piece of memory.
class TextOrder::Keys {
 public:
  std::size_t Count() const { return rows_.size(); }

  // Texts repeat in bulk mail, so a few keys made last are looked up by the text's hash.
  void Add(std::uint32_t row, std::uint64_t hash, std::string_view text) {
    Span& known = known_[hash % kMemoryOfKeys];
    std::uint64_t& known_hash = known_hashes_[hash % kMemoryOfKeys];
    if (known.size == 0 || known_hash != hash) {
      const std::string key = KeyOf(text);
      known = {bytes_.size(), key.size()};
      known_hash = hash;
      bytes_ += key;
    }
    rows_.push_back({row, known});
  }

  std::uint32_t RowAt(std::size_t i) const { return rows_[i].row; }
  std::string_view KeyAt(std::size_t i) const { return Bytes(rows_[i].key); }

  void Sort() {
    std::vector<Item> items(rows_.size());
    for (std::size_t i = 0; i < items.size(); ++i) items[i].index = static_cast<std::uint32_t>(i);
    std::vector<Range> ranges;
    if (items.size() > 1) ranges.push_back({0, items.size(), 0});
    while (!ranges.empty()) {
      const Range range = ranges.back();
      ranges.pop_back();
      SortRange(items, range, ranges);
    }
    std::vector<Row> sorted(rows_.size());
    for (std::size_t i = 0; i < items.size(); ++i) sorted[i] = rows_[items[i].index];
    rows_ = std::move(sorted);
  }

 private:
  struct Span {
    std::size_t start = 0;
    std::size_t size = 0;
  };
  struct Row {
    std::uint32_t row = 0;
    Span key;
  };
  // A row with eight bytes of its key.
  struct Item {
    std::uint64_t bytes = 0;
    std::uint32_t index = 0;
  };
  // Items whose keys agree in their first `depth` bytes.
  struct Range {
    std::size_t begin, end, depth;
  };

  std::string_view Bytes(const Span& key) const {
    return std::string_view(bytes_).substr(key.start, key.size);
  }

  // Sorts by the next eight bytes and leaves the items that these do not tell apart in `ranges`.
  void SortRange(std::vector<Item>& items, const Range& range, std::vector<Range>& ranges) const {
    const auto begin = items.begin() + static_cast<std::ptrdiff_t>(range.begin);
    const auto end = items.begin() + static_cast<std::ptrdiff_t>(range.end);
    bool longer = false;
    const Span& first = rows_[begin->index].key;
    bool alike = true;
    for (auto item = begin; item != end; ++item) {
      const Span& key = rows_[item->index].key;
      alike = alike && key.start == first.start;
      longer = longer || key.size > range.depth + sizeof item->bytes;
      item->bytes = NextBytes(key, range.depth);
    }
    if (alike) return;
    std::sort(begin, end, [](const Item& a, const Item& b) { return a.bytes < b.bytes; });
    if (!longer) return;
    for (auto item = begin; item != end;) {
      const auto next =
          std::find_if(item, end, [&](const Item& other) { return other.bytes != item->bytes; });
      if (next - item > 1) {
        ranges.push_back({static_cast<std::size_t>(item - items.begin()),
                          static_cast<std::size_t>(next - items.begin()),
                          range.depth + sizeof item->bytes});
      }
      item = next;
    }
  }

  std::uint64_t NextBytes(const Span& key, std::size_t depth) const {
    std::uint64_t value = 0;
    for (std::size_t i = depth; i < depth + sizeof value; ++i) {
      value = value << 8 | (i < key.size ? static_cast<unsigned char>(bytes_[key.start + i]) : 0u);
    }
    return value;
  }

  std::string bytes_;
  std::vector<Row> rows_;
  Span known_[kMemoryOfKeys];
  std::uint64_t known_hashes_[kMemoryOfKeys] = {};
};

TextOrder::TextOrder() = default;
TextOrder::~TextOrder() = default;

void TextOrder::Forget() {
  ids_ = {};
  hashes_ = {};
  order_ = {};
}

void TextOrder::BeginRows() {
  new_ids_.clear();
  new_hashes_.clear();
  new_places_.assign(ids_.size(), kGone);
  next_old_ = 0;
  changed_ = std::make_unique<Keys>();
}

void TextOrder::AddRow(std::int32_t id, std::string_view text) {
  const auto place = static_cast<std::uint32_t>(new_ids_.size());
  const std::uint64_t hash = std::hash<std::string_view>()(text);
  new_ids_.push_back(id);
  new_hashes_.push_back(hash);
  while (next_old_ < ids_.size() && ids_[next_old_] < id) ++next_old_;
  if (next_old_ < ids_.size() && ids_[next_old_] == id && hashes_[next_old_] == hash) {
    new_places_[next_old_] = place;
  } else {
    changed_->Add(place, hash, text);
  }
}

std::optional<std::vector<std::uint32_t>> TextOrder::EndRows(
    const std::function<std::string(std::int32_t)>& text_of) {
  std::vector<std::uint32_t> unchanged;
  unchanged.reserve(order_.size());
  for (const std::uint32_t old_place : order_) {
    if (new_places_[old_place] != kGone) unchanged.push_back(new_places_[old_place]);
  }
  const std::size_t few = std::max(kFewRows, new_ids_.size() / kRowsForOneChange);
  if (!unchanged.empty() && changed_->Count() > few) {
    changed_.reset();
    return std::nullopt;
  }
  changed_->Sort();
  ids_ = std::move(new_ids_);
  hashes_ = std::move(new_hashes_);
  order_ = PlaceChanged(unchanged, text_of);
  changed_.reset();
  return order_;
}

// Merges the changed rows, sorted by now, into the unchanged ones, whose order still holds.
std::vector<std::uint32_t> TextOrder::PlaceChanged(
    const std::vector<std::uint32_t>& unchanged,
    const std::function<std::string(std::int32_t)>& text_of) {
  std::vector<std::uint32_t> order;
  order.reserve(ids_.size());
  auto from = unchanged.begin();
  for (std::size_t i = 0; i < changed_->Count(); ++i) {
    const auto to = std::upper_bound(from, unchanged.end(), changed_->KeyAt(i),
                                     [&](std::string_view key, std::uint32_t place) {
                                       return key < KeyOf(text_of(ids_[place]));
                                     });
    order.insert(order.end(), from, to);
    order.push_back(changed_->RowAt(i));
    from = to;
  }
  order.insert(order.end(), from, unchanged.end());
  return order;
}

}  // namespace orvalo
