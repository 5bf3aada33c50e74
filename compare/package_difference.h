#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "package/package_inspection.h"
#include "platform/archive_library.h"
#include "platform/xml_dom.h"

namespace carrovan {

// In what two packages differ, for a face to show. What is the same is not in it. Texts are as they
// stand in the packages: they may hold any character.

enum class Difference {
  kOnlyInFirst,
  kOnlyInSecond,
  kChanged,
  kReordered,  // of a node: its children are the same, in another order
};

// A key of a registry file; never kChanged, since what is in it is reported value by value.
struct KeyDifference {
  Difference kind = Difference::kChanged;
  std::wstring key;  // with its root
};

struct ValueDifference {
  Difference kind = Difference::kChanged;
  std::wstring key;                    // with its root, as the first package that has it spells it
  std::wstring name;                   // empty for the key's default value
  std::optional<std::wstring> first;   // the data as a registry file writes it; "-" for a removal
  std::optional<std::wstring> second;  // the same of the other package
};

// An element of a document, its text or one of its attributes.
struct NodeDifference {
  Difference kind = Difference::kChanged;
  std::wstring path;                   // "/root/panel[@ID='7']"
  std::wstring attribute;              // empty for the element or its text
  std::optional<std::wstring> first;   // of an attribute or a text; nothing for an element
  std::optional<std::wstring> second;  // the same of the other package
};

// One item of the packages.
struct ItemDifference {
  // How much of one item is reported. `omitted` counts the rest.
  static constexpr std::size_t kMostDetails = 10000;

  Difference kind = Difference::kChanged;
  std::wstring firstName;  // the entry; empty where there is none
  std::wstring secondName;
  std::uint64_t firstBytes = 0;  // as declared
  std::uint64_t secondBytes = 0;
  std::wstring
      note;  // why the bytes were compared and not what they mean, or an item is unreadable
  std::vector<KeyDifference> keys;      // of a registry file
  std::vector<ValueDifference> values;  // the same
  std::vector<NodeDifference> nodes;    // of a document
  std::size_t omitted = 0;

  // Where an item has none of these, its content differs, or there is a note.
  std::size_t Details() const { return keys.size() + values.size() + nodes.size() + omitted; }
};

// Of one category, or of all that is no category's.
struct CategoryDifference {
  std::wstring label;                // "Other" for what is no category's
  std::optional<Difference> marked;  // the package that alone marks the category
  std::vector<ItemDifference> items;
};

// What a package says of itself.
struct PackageSide {
  std::wstring company;
  std::wstring product;
  std::wstring releaseVersion;
  std::wstring internalVersion;
};

struct PackageDifference {
  PackageSide first;
  PackageSide second;
  std::vector<CategoryDifference> categories;  // in the order of the table, "Other" last

  bool IsEmpty() const { return categories.empty(); }
};

// A package to compare.
struct ComparedPackage {
  ArchiveExaminer& archive;
  const PackageInspection& inspection;  // of this archive, its content was read
};

// Reads both packages and writes nothing. Between packages of different releases the names, keys
// and texts that hold the package's own version mean the same (VersionMeaning). Registry files are
// compared value by value and documents node by node, as long as they are understood and not too
// long; anything else byte by byte. The packages' descriptions are compared as far as they mark
// categories.
PackageDifference ComparePackages(const ComparedPackage& first, const ComparedPackage& second);

// Longer registry files and documents are compared byte by byte.
inline constexpr std::uint64_t kMostUnderstoodBytes = std::uint64_t{8} << 20;

}  // namespace carrovan
