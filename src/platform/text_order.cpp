#include "platform/text_order.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <utility>

#include "platform/code_page.h"
#include "platform/collation.h"

namespace orvalo::platform {

namespace {

// Placing a row among a million others reads twenty of them; past this share sorting all is faster.
constexpr std::size_t kRowsForOneChange = 512;
constexpr std::size_t kFewRows = 256;  // so few are always placed

std::string_view Compared(std::string_view text) {
  if (text.size() <= TextOrder::kComparedCharacters) return text;
  return FirstCharacters(text, TextOrder::kComparedCharacters);
}

}  // namespace

// Sort keys of many rows in one piece of memory.
class TextOrder::Keys {
 public:
  std::size_t Count() const { return items_.size(); }

  // Texts repeat in bulk mail, so a few keys made last are looked up by the text's hash.
  void Add(std::uint32_t row, std::uint64_t hash, std::string_view text) {
    Known& known = known_[hash % known_.size()];
    if (known.hash != hash || known.size == 0) {
      known = {hash, bytes_.size(), 0};
      AppendSortKey(Compared(text), &bytes_);
      known.size = static_cast<std::uint32_t>(bytes_.size() - known.start);
    }
    items_.push_back({0, known.start, known.size, row});
  }

  std::uint32_t RowAt(std::size_t i) const { return items_[i].row; }
  std::string_view KeyAt(std::size_t i) const {
    return std::string_view(bytes_).substr(items_[i].start, items_[i].size);
  }

  void Sort() {
    std::vector<Range> ranges;
    if (items_.size() > 1) ranges.push_back({0, items_.size(), 0});
    while (!ranges.empty()) {
      const Range range = ranges.back();
      ranges.pop_back();
      SortRange(range, ranges);
    }
  }

 private:
  struct Known {
    std::uint64_t hash = 0;
    std::size_t start = 0;
    std::uint32_t size = 0;  // 0: none yet
  };
  // A row, where its key lies, and the eight bytes of it that are sorted by just now.
  struct Item {
    std::uint64_t bytes;
    std::size_t start;
    std::uint32_t size;
    std::uint32_t row;
  };
  // Items whose keys agree in their first `depth` bytes.
  struct Range {
    std::size_t begin, end, depth;
  };
  static constexpr std::size_t kStep = sizeof(Item::bytes);

  // Sorts by the next eight bytes and leaves the items that these do not tell apart in `ranges`.
  void SortRange(const Range& range, std::vector<Range>& ranges) {
    const auto begin = items_.begin() + static_cast<std::ptrdiff_t>(range.begin);
    const auto end = items_.begin() + static_cast<std::ptrdiff_t>(range.end);
    bool longer = false;
    bool one_key = true;
    bool agree = true;
    for (auto item = begin; item != end; ++item) {
      item->bytes = BytesOf(*item, range.depth);
      longer = longer || item->size > range.depth + kStep;
      one_key = one_key && item->start == begin->start;
      agree = agree && item->bytes == begin->bytes;
    }
    if (one_key) return;
    if (!agree) {
      std::sort(begin, end, [](const Item& a, const Item& b) {
        return a.bytes != b.bytes ? a.bytes < b.bytes : a.row < b.row;
      });
    }
    if (!longer) return;
    for (auto item = begin; item != end;) {
      const auto next =
          std::find_if(item, end, [&](const Item& other) { return other.bytes != item->bytes; });
      if (next - item > 1) {
        ranges.push_back({static_cast<std::size_t>(item - items_.begin()),
                          static_cast<std::size_t>(next - items_.begin()), range.depth + kStep});
      }
      item = next;
    }
  }

  // Zeros follow the end of a key: no key has any within.
  std::uint64_t BytesOf(const Item& item, std::size_t depth) const {
    std::uint64_t value = 0;
    const std::size_t here = item.size > depth ? std::min(kStep, item.size - depth) : 0;
    const char* const bytes = bytes_.data() + item.start + depth;
    for (std::size_t i = 0; i < kStep; ++i)
      value = value << 8 | (i < here ? static_cast<unsigned char>(bytes[i]) : 0u);
    return value;
  }

  std::string bytes_;
  std::vector<Item> items_;
  std::array<Known, 1024> known_{};
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
  new_places_ = {};
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
                                       return key < SortKey(Compared(text_of(ids_[place])));
                                     });
    order.insert(order.end(), from, to);
    order.push_back(changed_->RowAt(i));
    from = to;
  }
  order.insert(order.end(), from, unchanged.end());
  return order;
}

}  // namespace orvalo::platform
