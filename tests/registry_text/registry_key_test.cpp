#include "registry_text/registry_key.h"

#include <gtest/gtest.h>

namespace carrovan {
namespace {

std::vector<std::wstring> ValueNames(const RegistryKey& key) {
  std::vector<std::wstring> names;
  for (const RegistryValue* value : key.AllValues()) names.push_back(value->name);
  return names;
}

std::vector<std::wstring> SubkeyNames(const RegistryKey& key) {
  std::vector<std::wstring> names;
  for (const auto& [name, subkey] : key.AllSubkeys()) names.push_back(name);
  return names;
}

TEST(RegistryKey, MakesAKeyWithItsParents) {
  RegistryKey root;
  root.Make(L"Software\\Maker\\Product").SetValue(MakeDwordValue(L"n", 1));
  ASSERT_NE(root.Find(L"Software\\Maker\\Product"), nullptr);
  EXPECT_NE(root.Find(L"Software\\Maker\\Product")->Value(L"n"), nullptr);
  EXPECT_NE(root.Find(L"Software"), nullptr);
  EXPECT_EQ(root.Find(L"Software\\Product"), nullptr);
  EXPECT_EQ(root.Find(L""), &root);
}

TEST(RegistryKey, FindsKeysWithoutRegardToCaseAndKeepsTheFirstSpelling) {
  RegistryKey root;
  const RegistryKey* made = &root.Make(L"Software\\Maker");
  EXPECT_EQ(root.Find(L"SOFTWARE\\maker"), made);
  EXPECT_EQ(&root.Make(L"SOFTWARE\\MAKER"), made);
  EXPECT_EQ(SubkeyNames(root), std::vector<std::wstring>{L"Software"});
}

TEST(RegistryKey, TakesSeveralBackslashesForOne) {
  RegistryKey root;
  const RegistryKey* made = &root.Make(L"a\\b");
  EXPECT_EQ(root.Find(L"\\a\\\\b\\"), made);
  EXPECT_EQ(root.Find(L"\\"), &root);
}

TEST(RegistryKey, ListsSubkeysByName) {
  RegistryKey root;
  for (const wchar_t* name : {L"sub_a", L"SubB", L"28.0", L"sub c", L"27.0"}) root.Make(name);
  EXPECT_EQ(SubkeyNames(root),
            (std::vector<std::wstring>{L"27.0", L"28.0", L"sub c", L"SubB", L"sub_a"}));
}

TEST(RegistryKey, ListsValuesAsTheyWereMade) {
  RegistryKey key;
  for (const wchar_t* name : {L"z", L"a", L"", L"M"}) key.SetValue(MakeDwordValue(name, 1));
  EXPECT_EQ(ValueNames(key), (std::vector<std::wstring>{L"z", L"a", L"", L"M"}));
}

TEST(RegistryKey, KeepsPlaceAndSpellingOfAValueThatIsSetAgain) {
  RegistryKey key;
  key.SetValue(MakeDwordValue(L"Name", 1));
  key.SetValue(MakeDwordValue(L"b", 2));
  key.SetValue(MakeStringValue(L"NAME", L"text"));
  EXPECT_EQ(ValueNames(key), (std::vector<std::wstring>{L"Name", L"b"}));
  EXPECT_EQ(*key.Value(L"name"), MakeStringValue(L"Name", L"text"));
}

TEST(RegistryKey, PutsAValueThatWasRemovedAtTheEnd) {
  RegistryKey key;
  for (const wchar_t* name : {L"a", L"b"}) key.SetValue(MakeDwordValue(name, 1));
  key.RemoveValue(L"A");
  key.RemoveValue(L"missing");
  EXPECT_EQ(ValueNames(key), std::vector<std::wstring>{L"b"});
  EXPECT_EQ(key.Value(L"a"), nullptr);
  key.SetValue(MakeDwordValue(L"a", 1));
  EXPECT_EQ(ValueNames(key), (std::vector<std::wstring>{L"b", L"a"}));
}

TEST(RegistryKey, RemovesAKeyWithEverythingBelow) {
  RegistryKey root;
  root.Make(L"a\\b\\c");
  root.Make(L"a\\d");
  EXPECT_TRUE(root.Remove(L"A\\B"));
  EXPECT_EQ(root.Find(L"a\\b\\c"), nullptr);
  EXPECT_EQ(root.Find(L"a\\b"), nullptr);
  EXPECT_NE(root.Find(L"a\\d"), nullptr);
  EXPECT_FALSE(root.Remove(L"a\\b"));
  EXPECT_FALSE(root.Remove(L"x\\y"));
  EXPECT_FALSE(root.Remove(L""));
  EXPECT_NE(root.Find(L"a"), nullptr);
}

}  // namespace
}  // namespace carrovan
