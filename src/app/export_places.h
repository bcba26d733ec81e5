#pragma once
#include <string>

#include "platform/output_file.h"

namespace orvalo {

// Where exports go: what no export may touch, and where a name without a folder leads. Made by
// start-up; empty, it protects nothing and leaves names as they are.
class ExportPlaces {
 public:
  ExportPlaces() = default;
  // `relative_to` empty: names are relative to the process's current directory.
  ExportPlaces(const std::string& data_folder, std::string relative_to);

  const platform::OwnPlaces& Own() const { return own_; }
  // The path of a file that the operator has named.
  std::string PathOf(const std::string& name) const;

 private:
  platform::OwnPlaces own_;
  std::string relative_to_;
};

}  // namespace orvalo
