#include <algorithm>
#include <map>
#include <set>

#include "platform/text.h"
#include "preview/machine_changes.h"

namespace carrovan {
namespace {

constexpr RegistryHive kHives[] = {RegistryHive::kCurrentUser, RegistryHive::kLocalMachine};

using Names = std::map<std::u16string, std::wstring>;  // folded, and as they are spelled
using ValuesByName = std::map<std::u16string, RegistryValue>;

Names SubkeysOf(const RegistryReader& registry, RegistryHive hive, const std::wstring& key) {
  Names names;
  const auto listed = registry.SubkeyNames(hive, key);
  if (!listed) return names;
  for (const std::wstring& name : *listed) names.emplace(FoldedName(name), name);
  return names;
}

ValuesByName ValuesOf(const RegistryReader& registry, RegistryHive hive, const std::wstring& key) {
  ValuesByName values;
  const auto listed = registry.Values(hive, key);
  if (!listed) return values;
  for (const RegistryValue& value : *listed) values.emplace(FoldedName(value.name), value);
  return values;
}

bool IsSameContent(const RegistryValue& a, const RegistryValue& b) {
  return a.type == b.type && a.data == b.data;
}

class Comparison {
 public:
  Comparison(RegistryHive hive, const RegistryReader& overlay, const RegistryReader& machine,
             MachineChanges& changes)
      : hive_(hive), overlay_(overlay), machine_(machine), changes_(changes) {}

  // A key before and after; only what the overlay changed is looked at.
  // The path may be spelled otherwise than before.
  void CompareKey(const std::wstring& pathBefore, const std::wstring& pathAfter,
                  const OverlayKey& key) {
    if (key.values != nullptr) CompareValues(pathBefore, pathAfter);
    const Names before = SubkeysOf(machine_, hive_, pathBefore);
    const Names after = SubkeysOf(overlay_, hive_, pathAfter);
    std::set<std::u16string> names;
    for (const auto& [name, subkey] : key.below) names.insert(name);
    // A key that was made again shows none of those it had.
    if (!key.showsMachine) {
      for (const auto& [name, spelled] : before) names.insert(name);
    }
    for (const std::u16string& name : names) {
      const auto was = before.find(name);
      const auto is = after.find(name);
      if (was != before.end() && is != after.end()) {
        CompareKey(Below(pathBefore, was->second), Below(pathAfter, is->second),
                   *key.below.at(name));
      } else if (was != before.end()) {
        Tell(Change::kRemoved, Below(pathBefore, was->second));
      } else if (is != after.end()) {
        Tell(Change::kAdded, Below(pathAfter, is->second));
      }
    }
  }

 private:
  static std::wstring Below(const std::wstring& path, const std::wstring& name) {
    return path.empty() ? name : path + L"\\" + name;
  }

  void CompareValues(const std::wstring& pathBefore, const std::wstring& pathAfter) {
    const ValuesByName before = ValuesOf(machine_, hive_, pathBefore);
    const ValuesByName after = ValuesOf(overlay_, hive_, pathAfter);
    for (const auto& [name, value] : before) {
      const auto is = after.find(name);
      if (is == after.end()) {
        changes_.values.push_back({hive_, pathBefore, value.name, value, std::nullopt});
      } else {
        auto& values =
            IsSameContent(value, is->second) ? changes_.rewrittenValues : changes_.values;
        values.push_back({hive_, pathBefore, value.name, value, is->second});
      }
    }
    for (const auto& [name, value] : after) {
      if (before.contains(name)) continue;
      changes_.values.push_back({hive_, pathAfter, value.name, std::nullopt, value});
    }
  }

  // With everything below.
  void Tell(Change change, const std::wstring& path) {
    changes_.keys.push_back({hive_, path, change});
    CompareValues(path, path);
    const RegistryReader& registry = change == Change::kAdded ? overlay_ : machine_;
    for (const auto& [folded, name] : SubkeysOf(registry, hive_, path)) {
      Tell(change, Below(path, name));
    }
  }

  RegistryHive hive_;
  const RegistryReader& overlay_;
  const RegistryReader& machine_;
  MachineChanges& changes_;
};

// Negative, zero or positive.
int OrderOfKeys(RegistryHive hiveA, const std::wstring& a, RegistryHive hiveB,
                const std::wstring& b) {
  if (hiveA != hiveB) return hiveA < hiveB ? -1 : 1;
  return CompareNames(a, b);
}

}  // namespace

void AddRegistryChanges(const OverlayRegistry& overlay, const RegistryReader& machine,
                        MachineChanges& changes) {
  for (const RegistryHive hive : kHives) {
    Comparison(hive, overlay, machine, changes).CompareKey(L"", L"", overlay.Root(hive));
  }
  std::sort(changes.keys.begin(), changes.keys.end(), [](const KeyChange& a, const KeyChange& b) {
    return OrderOfKeys(a.hive, a.path, b.hive, b.path) < 0;
  });
  std::sort(changes.values.begin(), changes.values.end(),
            [](const ValueChange& a, const ValueChange& b) {
              const int order = OrderOfKeys(a.hive, a.key, b.hive, b.key);
              return order != 0 ? order < 0 : CompareNames(a.name, b.name) < 0;
            });
}

}  // namespace carrovan
