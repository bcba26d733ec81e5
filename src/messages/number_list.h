#pragma once
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvalo {

// The list of typed numbers of the compose page. It always ends in one empty row, the place for the
// next number. Main thread.
class NumberList {
 public:
  static constexpr std::size_t kNumberLength = 32;  // characters of a row as it is edited

  // Whether a printable character may be typed into a row.
  static bool IsAllowed(char32_t character) { return character >= U'0' && character <= U'9'; }

  const std::vector<std::string>& rows() const { return rows_; }
  std::size_t Last() const { return rows_.size() - 1; }
  std::size_t Count() const { return rows_.size() - 1; }  // numbers

  void Clear() { rows_.assign(1, std::string()); }
  // The end of editing a row: an empty text deletes the row, another (cut to kNumberLength)
  // becomes its text. Rows that do not exist are passed over.
  void Set(std::size_t row, std::string_view text);
  void Delete(std::size_t row);
  // A stored number, whatever its length, becomes a row before the empty one.
  void Append(std::string_view number);

 private:
  std::vector<std::string> rows_{std::string()};
};

}  // namespace orvalo
