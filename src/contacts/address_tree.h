#pragma once
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orvalo {

// The external address book in memory: folders and entries below one root folder, and which entries
// are chosen as recipients. Main thread.
//
// A node is known by its number. Clear and PruneAndChain renumber: numbers from before are void.
class AddressTree {
 public:
  using NodeId = std::int32_t;
  static constexpr NodeId kRoot = 0;
  static constexpr NodeId kNone = -1;

  AddressTree() { Clear(); }

  // --- Filling: Clear, then folders and entries, then PruneAndChain once. ---

  void Clear();
  // `parent` is the root or a folder that was added since Clear. The new node's number.
  NodeId AddFolder(NodeId parent, std::string_view name);
  // Of the number only its digits are kept. A number without a digit gives no entry (kNone).
  NodeId AddEntry(NodeId parent, std::string_view name, std::string_view number);
  // Removes the folders below which there is no entry (the root stays), numbers the nodes in tree
  // order and links the entries into their chain.
  void PruneAndChain();

  // --- Reading ---

  bool IsFolder(NodeId node) const { return At(node).folder; }
  const std::string& Name(NodeId node) const { return At(node).name; }
  const std::string& Number(NodeId node) const { return At(node).number; }
  NodeId Parent(NodeId node) const { return At(node).parent; }  // kNone for the root
  const std::vector<NodeId>& Children(NodeId node) const { return At(node).children; }
  int Depth(NodeId node) const { return At(node).depth; }  // 0 for the root

  // The chain of all entries: its head is the last entry of the tree, and each entry leads to the
  // one before it; kNone ends it. "Chain order" is the order of walking it.
  NodeId ChainHead() const { return chain_head_; }
  NodeId NextInChain(NodeId entry) const { return At(entry).previous_entry; }
  std::size_t EntryCount() const { return entry_count_; }

  // --- Choosing ---

  bool IsSelected(NodeId entry) const { return At(entry).selected; }
  void Select(NodeId node, bool selected);  // an entry, or every entry below a folder
  void ClearSelections();
  std::size_t SelectedCount() const { return selected_count_; }
  // How many entries lie below a folder (or are it), and how many of them are chosen.
  struct Tally {
    std::size_t entries = 0;
    std::size_t selected = 0;
  };
  Tally Count(NodeId node) const;

 private:
  struct Node {
    bool folder = true;
    bool selected = false;
    int depth = 0;
    NodeId parent = kNone;
    NodeId previous_entry = kNone;
    std::string name;
    std::string number;
    std::vector<NodeId> children;
  };
  const Node& At(NodeId node) const { return nodes_[static_cast<std::size_t>(node)]; }
  Node& At(NodeId node) { return nodes_[static_cast<std::size_t>(node)]; }
  NodeId Add(NodeId parent, Node node);
  NodeId EndOfSubtree(NodeId node) const;

  std::vector<Node> nodes_;  // once pruned, in tree order: a node, then all that is below it
  NodeId chain_head_ = kNone;
  std::size_t entry_count_ = 0;
  std::size_t selected_count_ = 0;
};

}  // namespace orvalo
