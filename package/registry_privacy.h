#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "package/privacy_rules.h"
#include "package/registry_file_scan.h"

namespace carrovan {

// Something of a package that is personal.
struct PrivateItem {
  std::wstring entry;      // name in the package
  std::wstring key;        // of a registry file, with its root; else empty
  std::wstring name;       // of a value; empty for the default one and when the key is the item
  bool isValue = false;    // else it is a key with all its values, or a whole file
  bool isChanged = false;  // of a document: it stays, without the names
  std::wstring reason;     // as it reads behind the item and a colon

  bool operator==(const PrivateItem&) const = default;
};

// Takes a registry file apart: a key's line, a value with all its lines, anything else line by
// line. What is taken gives the file again, unit for unit. Holds one of these at a time; a value
// that is longer than anything that a registry holds comes in pieces.
class RegistryFileSplit {
 public:
  using TakePiece = std::function<void(std::u16string_view piece, bool isWhole)>;
  explicit RegistryFileSplit(TakePiece take) : take_(std::move(take)) {}

  void Take(std::string_view part);
  // Called once, when all bytes were taken.
  void Finish();

  bool IsUtf16() const { return units_.IsUtf16(); }

 private:
  void TakeUnit(char16_t unit);
  bool EndsHere(char16_t unit);
  void Give(bool isWhole);

  TakePiece take_;
  RegistryFileUnits units_;
  std::u16string piece_;
  bool hasInk_ = false;
  bool isValue_ = false;
  bool inQuotes_ = false;
  bool isEscaped_ = false;
  bool goesOn_ = false;  // the last ink of a value's line is a backslash
  bool isWhole_ = true;
};

// Finds what is personal in a registry file, and gives the file without it.
class RegistryPrivacyFilter {
 public:
  using TakeBytes = std::function<void(std::string_view bytes)>;

  // The judge and the list outlive it. `entry` is the file's name in the package; `kept` may be
  // empty.
  RegistryPrivacyFilter(const PrivacyJudge& judge, std::wstring entry,
                        std::vector<PrivateItem>& found, TakeBytes kept);

  // The file's bytes in their order.
  void Take(std::string_view part) { split_.Take(part); }
  void Finish();

 private:
  void TakePiece(std::u16string_view piece, bool isWhole);
  bool IsPrivate(std::u16string_view piece, bool isWhole);
  bool IsPrivateKey(std::wstring_view line);
  bool IsPrivateValue(const std::wstring& text, bool isWhole);
  void Keep(std::u16string_view piece);

  const PrivacyJudge& judge_;
  const std::wstring entry_;
  std::vector<PrivateItem>& found_;
  TakeBytes kept_;
  RegistryFileSplit split_;
  std::wstring key_;
  bool keyIsPrivate_ = false;
  bool markIsKept_ = false;
};

// Adds the users whose profile folders the values of a registry file name.
class ProfileNameCollector {
 public:
  explicit ProfileNameCollector(std::vector<std::wstring>& users);

  void Take(std::string_view part) { split_.Take(part); }
  void Finish() { split_.Finish(); }

 private:
  void TakeText(std::wstring_view text);

  std::vector<std::wstring>& users_;
  RegistryFileSplit split_;
};

}  // namespace carrovan
