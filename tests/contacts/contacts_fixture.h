#pragma once
#include <string>

#include "contacts/address_tree.h"

namespace orvalo::test {

// What is below a folder: "Folder{Entry:number Entry:number} Entry:number".
inline std::string Drawn(const AddressTree& tree, AddressTree::NodeId folder = AddressTree::kRoot) {
  std::string text;
  for (const auto child : tree.Children(folder)) {
    text += (text.empty() ? "" : " ") + tree.Name(child);
    text += tree.IsFolder(child) ? "{" + Drawn(tree, child) + "}" : ":" + tree.Number(child);
  }
  return text;
}

}  // namespace orvalo::test
