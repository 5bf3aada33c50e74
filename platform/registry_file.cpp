#include "platform/registry_file.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

namespace carrovan {

namespace {

std::optional<std::u16string> ReadUnits(const FileReader& files, const std::wstring& path) {
  RegistryTextUnits units;
  const SystemCode code = files.ReadInParts(path, [&](std::string_view part, std::uint64_t bytes) {
    units.Expect(bytes);
    units.Take(part);
    return true;
  });
  return code == kSystemOk ? std::optional(units.Finish()) : std::nullopt;
}

}  // namespace

std::optional<RegistryFile> ReadRegistryFile(const FileReader& files, const std::wstring& path) {
  const auto text = ReadUnits(files, path);
  return text ? ParseRegistryUnits(*text) : std::nullopt;
}

bool ReadRegistryKeys(const FileReader& files, const std::wstring& path,
                      const TakeRegistryKey& take) {
  const auto text = ReadUnits(files, path);
  return text && ParseRegistryKeys(*text, take);
}

void ApplyRegistryKey(const RegistryKeyChange& change, RegistryKey& root) {
  if (change.remove) {
    root.Remove(change.keyPath);
    return;
  }
  RegistryKey& key = root.Make(change.keyPath);
  for (const RegistryValueChange& value : change.values) {
    if (value.remove) {
      key.RemoveValue(value.value.name);
    } else {
      key.SetValue(value.value);
    }
  }
}

namespace {

SystemCode UnlessMissing(SystemCode code) { return code == kFileNotFound ? kSystemOk : code; }

class KeyApplication {
 public:
  KeyApplication(const RegistryKeyChange& change, RegistryEditor& registry)
      : change_(change), registry_(registry) {}

  SystemCode Run() {
    // A whole hive stays.
    if (change_.remove && change_.keyPath.empty()) return kSystemOk;
    if (change_.remove) return UnlessMissing(registry_.DeleteTree(change_.hive, change_.keyPath));
    Note(registry_.CreateKey(change_.hive, change_.keyPath));
    if (first_ != kSystemOk) return first_;
    for (const RegistryValueChange& value : change_.values) {
      if (!value.remove) {
        toSet_.push_back(value.value);
        continue;
      }
      SetValues();
      Note(UnlessMissing(registry_.DeleteValue(change_.hive, change_.keyPath, value.value.name)));
    }
    SetValues();
    return first_;
  }

 private:
  void Note(SystemCode code) {
    if (first_ == kSystemOk) first_ = code;
  }

  // Values on end are set by one call.
  void SetValues() {
    if (toSet_.empty()) return;
    Note(registry_.SetValues(change_.hive, change_.keyPath, toSet_));
    toSet_.clear();
  }

  const RegistryKeyChange& change_;
  RegistryEditor& registry_;
  std::vector<RegistryValue> toSet_;
  SystemCode first_ = kSystemOk;
};

}  // namespace

void ApplyRegistryFile(const RegistryFile& file, RegistryHive hive, RegistryKey& root) {
  for (const RegistryKeyChange& change : file.keys) {
    if (change.hive == hive) ApplyRegistryKey(change, root);
  }
}

SystemCode ApplyRegistryFile(const RegistryFile& file, RegistryEditor& registry) {
  SystemCode first = kSystemOk;
  for (const RegistryKeyChange& change : file.keys) {
    const SystemCode code = ApplyRegistryKey(change, registry);
    if (first == kSystemOk) first = code;
  }
  return first;
}

SystemCode ApplyRegistryKey(const RegistryKeyChange& change, RegistryEditor& registry) {
  return KeyApplication(change, registry).Run();
}

bool Concerns(const RegistryFile& file, RegistryHive hive) {
  return std::any_of(file.keys.begin(), file.keys.end(),
                     [hive](const RegistryKeyChange& change) { return change.hive == hive; });
}

}  // namespace carrovan
