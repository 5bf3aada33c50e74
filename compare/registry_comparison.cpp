#include "compare/registry_comparison.h"

#include <map>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "registry_text/registry_file_parser.h"
#include "registry_text/registry_file_writer.h"
#include "text/text.h"

namespace carrovan {
namespace {

struct KeyContent {
  std::wstring spelling;
  std::map<std::wstring, RegistryValueChange, NameLess> values;  // by the name's meaning
};

// By the key's meaning. Keys that are removed have a name of their own.
using Keys = std::map<std::wstring, KeyContent, NameLess>;

std::wstring DecodedText(const std::string& bytes) {
  const auto* const data = static_cast<const std::uint8_t*>(static_cast<const void*>(bytes.data()));
  return DecodeText({data, bytes.size()}).text;
}

Keys KeysOf(RegistryFile file, const VersionMeaning& meaning) {
  Keys keys;
  for (RegistryKeyChange& change : file.keys) {
    const std::wstring path =
        (change.remove ? L"-" : L"") + FullKeyPath(change.hive, change.keyPath);
    KeyContent& key = keys[meaning.OfText(path)];
    key.spelling = path;
    for (RegistryValueChange& value : change.values) {
      std::wstring name = meaning.OfText(value.value.name);
      key.values.insert_or_assign(std::move(name), std::move(value));
    }
  }
  return keys;
}

// Says in the note why there are none.
std::optional<Keys> ReadKeys(const ComparedText& text, const std::wstring& name,
                             std::wstring& note) {
  auto file = ParseRegistryFile(DecodedText(text.bytes));
  if (!file) {
    note = name + L" is not a registry file";
    return std::nullopt;
  }
  if (!file->problems.empty()) {
    const RegistryFileProblem& problem = file->problems.front();
    note =
        name + L" is not understood: line " + std::to_wstring(problem.line) + L": " + problem.text;
    return std::nullopt;
  }
  return KeysOf(std::move(*file), text.meaning);
}

bool IsText(const RegistryValue& value) {
  return value.type == kRegSz || value.type == kRegExpandSz || value.type == kRegMultiSz;
}

// The zeros between several texts are a part of it.
std::wstring TextIn(const RegistryValue& value) {
  std::u16string units;
  for (std::size_t i = 0; i + 1 < value.data.size(); i += 2) {
    units.push_back(static_cast<char16_t>(value.data[i] | (value.data[i + 1] << 8)));
  }
  return FromUtf16(units);
}

std::wstring DataOf(const RegistryValueChange& change) {
  return change.remove ? L"-" : RegistryValueText(change.value);
}

class RegistryComparison {
 public:
  RegistryComparison(const VersionMeaning& first, const VersionMeaning& second,
                     ItemDifference& item)
      : first_(first), second_(second), item_(item) {}

  void Compare(const Keys& first, const Keys& second) {
    for (const auto& [meaning, key] : first) {
      const auto other = second.find(meaning);
      if (other == second.end()) {
        AddKey(Difference::kOnlyInFirst, key);
      } else {
        CompareValues(key, other->second);
      }
    }
    for (const auto& [meaning, key] : second) {
      if (!first.contains(meaning)) AddKey(Difference::kOnlyInSecond, key);
    }
  }

 private:
  bool HasRoom() {
    if (item_.keys.size() + item_.values.size() < ItemDifference::kMostDetails) return true;
    ++item_.omitted;
    return false;
  }

  void AddKey(Difference kind, const KeyContent& key) {
    if (HasRoom()) item_.keys.push_back({kind, key.spelling});
    for (const auto& [meaning, value] : key.values) AddValue(kind, key, value);
  }

  void AddValue(Difference kind, const KeyContent& key, const RegistryValueChange& value) {
    if (!HasRoom()) return;
    ValueDifference& added = item_.values.emplace_back();
    added.kind = kind;
    added.key = key.spelling;
    added.name = value.value.name;
    (kind == Difference::kOnlyInFirst ? added.first : added.second) = DataOf(value);
  }

  void CompareValues(const KeyContent& first, const KeyContent& second) {
    for (const auto& [meaning, value] : first.values) {
      const auto other = second.values.find(meaning);
      if (other == second.values.end()) {
        AddValue(Difference::kOnlyInFirst, first, value);
      } else if (!AreSame(value, other->second) && HasRoom()) {
        item_.values.push_back({Difference::kChanged, first.spelling, value.value.name,
                                DataOf(value), DataOf(other->second)});
      }
    }
    for (const auto& [meaning, value] : second.values) {
      if (!first.values.contains(meaning)) AddValue(Difference::kOnlyInSecond, second, value);
    }
  }

  bool AreSame(const RegistryValueChange& a, const RegistryValueChange& b) const {
    if (a.remove || b.remove) return a.remove == b.remove;
    if (a.value.type != b.value.type) return false;
    if (a.value.data == b.value.data) return true;
    // An odd last byte belongs to no text.
    if (!IsText(a.value) || a.value.data.size() % 2 != 0 || b.value.data.size() % 2 != 0) {
      return false;
    }
    return first_.OfText(TextIn(a.value)) == second_.OfText(TextIn(b.value));
  }

  const VersionMeaning& first_;
  const VersionMeaning& second_;
  ItemDifference& item_;
};

}  // namespace

bool CompareRegistryFiles(const ComparedText& first, const ComparedText& second,
                          ItemDifference& item) {
  const auto keys = ReadKeys(first, L"the first", item.note);
  const auto others = keys ? ReadKeys(second, L"the second", item.note) : std::nullopt;
  if (!others) return false;
  RegistryComparison(first.meaning, second.meaning, item).Compare(*keys, *others);
  return true;
}

}  // namespace carrovan
