#include "contacts/address_tree.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "app/settings.h"
#include "contacts/address_walk.h"
#include "contacts/external_address_book.h"

namespace orvalo::test {
namespace {

// "name:number" of entries, "name(...)" of folders, in tree order; a star behind what is chosen.
std::string Drawn(const AddressTree& tree, AddressTree::NodeId node = AddressTree::kRoot) {
  if (!tree.IsFolder(node)) {
    return tree.Name(node) + ":" + tree.Number(node) + (tree.IsSelected(node) ? "* " : " ");
  }
  std::string drawn = tree.Name(node) + "(";
  for (const auto child : tree.Children(node)) drawn += Drawn(tree, child);
  return drawn + ")";
}

std::string Chain(const AddressTree& tree) {
  std::string names;
  for (auto entry = tree.ChainHead(); entry != AddressTree::kNone;
       entry = tree.NextInChain(entry)) {
    names += tree.Name(entry);
  }
  return names;
}

void FillSample(AddressTree& tree) {
  const auto outer = tree.AddFolder(AddressTree::kRoot, "outer");
  const auto bare = tree.AddFolder(AddressTree::kRoot, "bare");
  tree.AddFolder(tree.AddFolder(bare, "barer"), "barest");
  tree.AddEntry(AddressTree::kRoot, "d", "4");
  const auto inner = tree.AddFolder(outer, "inner");
  tree.AddEntry(inner, "a", "+44 (0)20-7946 0958");
  tree.AddEntry(outer, "c", "3");
  tree.AddEntry(inner, "b", "2");
  EXPECT_EQ(tree.AddEntry(bare, "x", "none"), AddressTree::kNone);
}

TEST(AddressTreeTest, PrunesAndChainsInTreeOrder) {
  AddressTree tree;
  EXPECT_EQ(Drawn(tree), "root()");
  FillSample(tree);
  tree.PruneAndChain();
  EXPECT_EQ(Drawn(tree), "root(outer(inner(a:4402079460958 b:2 )c:3 )d:4 )");
  EXPECT_EQ(Chain(tree), "dcba");
  EXPECT_EQ(tree.EntryCount(), 4u);
  EXPECT_EQ(tree.Depth(tree.ChainHead()), 1);
}

TEST(AddressTreeTest, ChoosingAFolderChoosesAllBelowIt) {
  AddressTree tree;
  FillSample(tree);
  tree.PruneAndChain();
  const auto outer = tree.Children(AddressTree::kRoot)[0];
  const auto inner = tree.Children(outer)[0];
  tree.Select(outer, true);
  tree.Select(outer, true);
  EXPECT_EQ(tree.SelectedCount(), 3u);
  tree.Select(inner, false);
  EXPECT_EQ(Drawn(tree), "root(outer(inner(a:4402079460958 b:2 )c:3* )d:4 )");
  EXPECT_EQ(tree.Count(outer).entries, 3u);
  EXPECT_EQ(tree.Count(outer).selected, 1u);
  tree.ClearSelections();
  EXPECT_EQ(tree.SelectedCount(), 0u);
  EXPECT_EQ(tree.Count(AddressTree::kRoot).selected, 0u);
}

TEST(AddressTreeTest, DepthCostsNoStack) {
  AddressTree tree;
  auto folder = AddressTree::kRoot;
  for (int i = 0; i < 100'000; ++i) folder = tree.AddFolder(folder, "f");
  tree.AddEntry(folder, "a", "1");
  tree.PruneAndChain();
  tree.Select(AddressTree::kRoot, true);
  EXPECT_EQ(tree.SelectedCount(), 1u);
  EXPECT_EQ(tree.Depth(tree.ChainHead()), 100'001);
}

// Every list holds two more and a person: a tree without end.
struct EndlessBook : platform::AddressBook {
  std::vector<HierarchyRow> Hierarchy(EntryId) override { return {}; }
  std::vector<ContentsRow> Contents(EntryId list) override {
    return {{Kind::kDistributionList, list * 2 + 1, "l", ""},
            {Kind::kMailUser, kNoEntry, "\xFFn\n", "5"},
            {Kind::kDistributionList, list * 2 + 2, "r", ""}};
  }
  std::vector<std::string> Problems() const override { return {}; }
};

TEST(AddressWalkTest, EndsWhateverTheBookSays) {
  EndlessBook book;
  AddressTree tree;
  AddressWalk walk(book, tree, 1000);
  walk.Walk();
  EXPECT_TRUE(walk.WasCut());
  tree.PruneAndChain();
  EXPECT_GT(tree.EntryCount(), 100u);
  EXPECT_EQ(tree.Name(tree.ChainHead()), "\uFFFDn");
}

struct ScriptedSource : AddressBookSource {
  bool Walk(AddressBookKind kind, AddressTree& tree) override {
    ++walks;
    FillSample(tree);
    if (kind == AddressBookKind::kMapi) tree.AddEntry(AddressTree::kRoot, "m", "9");
    if (broken) throw std::runtime_error("broken");
    return success;
  }
  int walks = 0;
  bool success = true, broken = false;
};

TEST(ExternalAddressBookTest, ReadsOnceUnlessForcedOrAnotherSourceIsChosen) {
  AppSettings settings;
  ScriptedSource source;
  ExternalAddressBook book(settings, &source);
  source.success = false;
  book.LoadExternalAddressBook(false);
  EXPECT_FALSE(book.IsLoaded());
  source.success = true;
  struct Step {
    bool mapi, force;
    int walks;
  };
  for (const Step& step : {Step{false, false, 2},
                           {false, false, 2},
                           {false, true, 3},
                           {true, false, 4},
                           {true, false, 4},
                           {false, false, 5}}) {
    settings.SetFlag(FlagSetting::kMapiAddressBook, step.mapi);
    EXPECT_EQ(book.WouldLoad(step.force), source.walks != step.walks);
    book.LoadExternalAddressBook(step.force);
    EXPECT_EQ(source.walks, step.walks);
    EXPECT_TRUE(book.IsLoaded());
    EXPECT_EQ(book.tree().EntryCount(), step.mapi ? 5u : 4u);
  }
  source.broken = true;
  EXPECT_THROW(book.LoadExternalAddressBook(true), std::runtime_error);
  EXPECT_EQ(Chain(book.tree()), "dcba");
}

TEST(ExternalAddressBookTest, WithoutASourceThereIsOnlyTheRoot) {
  AppSettings settings;
  ExternalAddressBook book(settings, nullptr);
  book.LoadExternalAddressBook(true);
  EXPECT_FALSE(book.IsLoaded());
  EXPECT_EQ(Drawn(book.tree()), "root()");
}

}  // namespace
}  // namespace orvalo::test
