#pragma once
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace orvalo::translator {

// The entries of a container by path ("strings.json", "dialogs/129.ui").
using Entries = std::map<std::string, std::string>;

// The translated texts of one language, in two files:
// - "strings.json": texts by id, as in the container;
// - "forms.json": for each dialog and menu ("dialogs/129.ui", "menus/221.json"), or "*" for all of
//   them, an object of translated texts by the program's own.
struct Translation {
  std::string strings;
  std::string forms;
};

// Reads both from a folder. Throws std::runtime_error when one is missing.
Translation ReadTranslation(const std::string& folder);

// What one finding of a check is about.
struct Finding {
  enum class Kind {
    kMissing,  // the language lacks it: the program shows a number, or English
    kForeign,  // the program knows nothing of it: misspelt or out of date
    kUnfit,    // the program cannot use it: other inserts, fields or lines than its own text
  };
  Kind kind;
  std::string where;  // "strings.json 1140", "dialogs/129.ui"
  std::string what;   // the text, or the control
};
std::string ToLine(const Finding& finding);

// A translated container: `own` (the program's) with its texts replaced and all else as it is.
// Whatever the translation lacks stays as in `own`; `findings` tells. Throws std::runtime_error for
// files that are no JSON of the expected form.
Entries Translated(const Entries& own, const Translation& translation,
                   std::vector<Finding>* findings);

// Compares a finished container with the program's own: strings, dialogs and their controls, menus
// and accelerators. Throws as above.
std::vector<Finding> Compare(const Entries& own, const Entries& other);

// The two files of a new translation, every text still the program's own.
Translation Template(const Entries& own);

}  // namespace orvalo::translator
