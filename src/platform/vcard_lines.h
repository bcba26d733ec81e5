#pragma once
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvalo::platform {

// One property of a card: "group.NAME;TYPE=cell;CHARSET=...:value".
struct VcardProperty {
  std::string group;  // may be empty
  std::string name;
  // Those without a name (version 2.1) are types or encodings and stand as such.
  std::vector<std::pair<std::string, std::string>> parameters;
  std::string value;  // as written; lines unfolded

  // The first parameter of that name, or the empty text. Names compare without regard to case.
  std::string Parameter(std::string_view wanted) const;
  // Whether one of its types is this one ("TYPE=home,cell", "TYPE=home;TYPE=cell", "CELL").
  bool HasType(std::string_view type) const;
};

// Goes through the properties of a text, line by line. Values of properties that nobody wants
// (pictures, mostly) are not put together.
class VcardLines {
 public:
  explicit VcardLines(std::string_view text) : rest_(text) {}

  // The next line that is a property whose name `wanted` knows; false at the end.
  bool Next(bool (*wanted)(std::string_view name), VcardProperty* property);

  // Version 2.1 keeps the blank at which it folds a line; the later ones do not.
  void KeepFoldBlanks(bool keep) { keep_fold_blanks_ = keep; }

 private:
  std::string_view TakeLine();
  bool NextIsFolded() const;

  std::string_view rest_;
  bool keep_fold_blanks_ = false;
};

}  // namespace orvalo::platform
