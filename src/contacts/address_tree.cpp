#include "contacts/address_tree.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace orvalo {

void AddressTree::Clear() {
  nodes_.assign(1, Node{});
  nodes_.front().name = "root";
  chain_head_ = kNone;
  entry_count_ = 0;
  selected_count_ = 0;
}

AddressTree::NodeId AddressTree::Add(NodeId parent, Node node) {
  const auto id = static_cast<NodeId>(nodes_.size());
  node.parent = parent;
  node.depth = At(parent).depth + 1;
  At(parent).children.push_back(id);
  nodes_.push_back(std::move(node));
  return id;
}

AddressTree::NodeId AddressTree::AddFolder(NodeId parent, std::string_view name) {
  Node folder;
  folder.name = name;
  return Add(parent, std::move(folder));
}

AddressTree::NodeId AddressTree::AddEntry(NodeId parent, std::string_view name,
                                          std::string_view number) {
  Node entry;
  entry.folder = false;
  entry.name = name;
  std::copy_if(number.begin(), number.end(), std::back_inserter(entry.number),
               [](char c) { return c >= '0' && c <= '9'; });
  return entry.number.empty() ? kNone : Add(parent, std::move(entry));
}

// A node's number is higher than its parent's, so one walk from the last to the first sees the
// leaves before their folders.
void AddressTree::PruneAndChain() {
  std::vector<char> kept(nodes_.size(), 0);
  for (std::size_t i = nodes_.size(); i-- > 0;) {
    if (!nodes_[i].folder) kept[i] = 1;
    if (kept[i] != 0 && nodes_[i].parent != kNone) {
      kept[static_cast<std::size_t>(nodes_[i].parent)] = 1;
    }
  }

  std::vector<Node> old = std::move(nodes_);
  Clear();
  std::vector<std::pair<NodeId, NodeId>> waiting;  // an old node, and its parent's new number
  const auto wait_for_children = [&](NodeId parent, NodeId new_parent) {
    const auto& children = old[static_cast<std::size_t>(parent)].children;
    for (auto child = children.rbegin(); child != children.rend(); ++child) {
      if (kept[static_cast<std::size_t>(*child)] != 0) waiting.emplace_back(*child, new_parent);
    }
  };
  wait_for_children(kRoot, kRoot);
  while (!waiting.empty()) {
    const auto [node, parent] = waiting.back();
    waiting.pop_back();
    Node& from = old[static_cast<std::size_t>(node)];
    Node to;
    to.folder = from.folder;
    to.selected = from.selected;
    to.name = std::move(from.name);
    to.number = std::move(from.number);
    const NodeId id = Add(parent, std::move(to));
    if (from.folder) {
      wait_for_children(node, id);
    } else {
      At(id).previous_entry = std::exchange(chain_head_, id);
      ++entry_count_;
      if (from.selected) ++selected_count_;
    }
  }
}

AddressTree::NodeId AddressTree::EndOfSubtree(NodeId node) const {
  auto end = node + 1;
  while (end < static_cast<NodeId>(nodes_.size()) && At(end).depth > At(node).depth) ++end;
  return end;
}

void AddressTree::Select(NodeId node, bool selected) {
  const NodeId end = EndOfSubtree(node);
  for (NodeId id = node; id < end; ++id) {
    Node& entry = At(id);
    if (entry.folder || entry.selected == selected) continue;
    entry.selected = selected;
    if (selected) {
      ++selected_count_;
    } else {
      --selected_count_;
    }
  }
}

void AddressTree::ClearSelections() {
  for (Node& node : nodes_) node.selected = false;
  selected_count_ = 0;
}

AddressTree::Tally AddressTree::Count(NodeId node) const {
  Tally tally;
  const NodeId end = EndOfSubtree(node);
  for (NodeId id = node; id < end; ++id) {
    if (At(id).folder) continue;
    ++tally.entries;
    if (At(id).selected) ++tally.selected;
  }
  return tally;
}

}  // namespace orvalo
