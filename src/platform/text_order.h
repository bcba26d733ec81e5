#pragma once
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvalo::platform {

// The order of a long list by one of its texts, in the user's language. It is told all rows, with
// their texts, in ascending order of their ids, and gives the order back; told them again later, it
// only places the rows that are new or changed. Between the two it keeps 16 bytes a row and no
// text. Texts that are alike in their first kComparedCharacters count as equal; equal ones keep the
// order of the telling, but for those placed later. One thread.
class TextOrder {
 public:
  static constexpr std::size_t kComparedCharacters = 4096;

  TextOrder();
  ~TextOrder();
  TextOrder(const TextOrder&) = delete;
  TextOrder& operator=(const TextOrder&) = delete;

  // Forgets all rows: the next telling is about another text.
  void Forget();

  void BeginRows();
  void AddRow(std::int32_t id, std::string_view text);

  // The rows' places in the telling (from 0), ascending by text. Nothing when so many have changed
  // that all must be told once more, after Forget. `text_of` gives the text of an id anew.
  std::optional<std::vector<std::uint32_t>> EndRows(
      const std::function<std::string(std::int32_t)>& text_of);

 private:
  class Keys;
  static constexpr std::uint32_t kGone = UINT32_MAX;

  std::vector<std::uint32_t> PlaceChanged(const std::vector<std::uint32_t>& unchanged,
                                          const std::function<std::string(std::int32_t)>& text_of);

  // As last told: ids, hashes of the texts, and the places in order of the texts.
  std::vector<std::int32_t> ids_;
  std::vector<std::uint64_t> hashes_;
  std::vector<std::uint32_t> order_;

  // Of the telling under way.
  std::vector<std::int32_t> new_ids_;
  std::vector<std::uint64_t> new_hashes_;
  std::vector<std::uint32_t> new_places_;  // by old place; kGone when the row is gone or changed
  std::size_t next_old_ = 0;
  std::unique_ptr<Keys> changed_;  // sort keys of the rows that are new or changed
};

}  // namespace orvalo::platform
