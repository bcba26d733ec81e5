#pragma once
#include <array>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/resource_container.h"
#include "platform/text_format.h"

namespace orvalo {

// The texts of the user interface, by 16-bit id, from the entry "strings.json" of one resource
// container: the program's own or a replaceable one. Created by start-up before the first text is
// needed; UseContainer is called at most once, at start-up, before other threads exist; look-ups
// may run on any thread.
class Texts {
 public:
  Texts();  // the program's own container

  // Takes all texts from `container` from now on (its missing ids are missing: no mixing of
  // languages). False, changing nothing, when it has no sound "strings.json": a JSON object of
  // texts whose names are ids in decimal; a member of another kind is passed over.
  bool UseContainer(const platform::ResourceContainer& container);

  // The text, or "String [<id>]" when it is missing or empty.
  std::string Load(int id) const;
  // The text, or the empty text.
  std::string LoadOrEmpty(int id) const;
  // The text with the inserts; nothing when it is missing or does not fit them.
  std::optional<std::string> Format(int id,
                                    std::initializer_list<platform::FormatInsert> inserts) const;

 private:
  std::map<int, std::string> texts_;
};

}  // namespace orvalo
