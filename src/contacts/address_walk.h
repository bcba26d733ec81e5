#pragma once
#include <cstddef>
#include <string>
#include <vector>

#include "contacts/address_tree.h"
#include "platform/address_book.h"

namespace orvalo {

// The walk of an outside address book into the tree: for each container its folders first, each
// with all that is below it, then its people and lists in the order of the rows. A list is a folder
// that holds those of its members that have a mobile number.
//
// The walk ends whatever the book says: a container or list is not walked again within itself,
// folders are at most kDeepest below each other, and after so many rows no more are taken (lists
// that hold each other's lists multiply).
class AddressWalk {
 public:
  static constexpr std::size_t kDeepest = 100;
  static constexpr std::size_t kMostRows = 500'000;

  AddressWalk(platform::AddressBook& book, AddressTree& tree, std::size_t most_rows = kMostRows)
      : book_(book), tree_(tree), most_rows_(most_rows) {}

  // Adds the whole book below the tree's root. Once.
  void Walk() { WalkContainer(platform::AddressBook::kRootContainer, AddressTree::kRoot); }

  // Whether the tree had to stay smaller than the book.
  bool WasCut() const { return cut_; }

 private:
  void WalkContainer(platform::AddressBook::EntryId container, AddressTree::NodeId folder);
  void AddFolder(AddressTree::NodeId parent, const std::string& name,
                 platform::AddressBook::EntryId container);
  bool TakeRow();

  platform::AddressBook& book_;
  AddressTree& tree_;
  std::vector<platform::AddressBook::EntryId> open_;  // from the root down to the one being walked
  std::size_t most_rows_;
  std::size_t rows_ = 0;
  bool cut_ = false;
};

}  // namespace orvalo
