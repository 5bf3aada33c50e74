#include <algorithm>

#include "platform/registry_path.h"
#include "platform/text.h"
#include "restore/undo_steps.h"

namespace carrovan {
namespace {

const RegistryValue* Find(const KeyImage& image, const std::wstring& name) {
  const auto found = std::ranges::find_if(image.values, [&](const RegistryValue& value) {
    return CompareNames(value.name, name) == 0;
  });
  return found == image.values.end() ? nullptr : &*found;
}

// The spelling of a name is no part of the value.
bool IsSame(const RegistryValue* a, const RegistryValue* b) {
  if (a == nullptr || b == nullptr) return a == b;
  return a->type == b->type && a->data == b->data;
}

bool Holds(const std::vector<std::wstring>& names, const std::wstring& name) {
  return std::ranges::any_of(
      names, [&](const std::wstring& other) { return CompareNames(other, name) == 0; });
}

// Puts the keys of one restore point back, value by value.
class KeyUndo {
 public:
  KeyUndo(const RestorePoint& point, const UndoChoice& choice, const Machine& machine,
          UndoReport& report)
      : point_(point), choice_(choice), machine_(machine), report_(report) {}

  // Keys come back from the top down and go from the bottom up; the journal names those above
  // first.
  void Run() {
    for (const KeyHistory& key : point_.keys) {
      if (choice_.includesKey && !choice_.includesKey(key)) continue;
      if (Restore(key)) restored_.push_back(&key);
    }
    std::ranges::stable_sort(restored_, [](const KeyHistory* a, const KeyHistory* b) {
      return a->keyPath.size() > b->keyPath.size();
    });
    for (const KeyHistory* key : restored_) RemoveMadeKey(*key);
  }

 private:
  KeyImage ImageNow(const KeyHistory& key) const {
    auto values = machine_.registry.Values(key.hive, key.keyPath);
    return values ? KeyImage{true, std::move(*values)} : KeyImage{};
  }

  // False when there was nothing to do.
  bool Restore(const KeyHistory& key) {
    const KeyImage now = ImageNow(key);
    if (now == key.before) return false;
    if (key.before.exists && !now.exists && !MakeKey(key)) return true;
    RemoveMadeValues(key, now);
    PutValuesBack(key, now);
    return true;
  }

  bool MakeKey(const KeyHistory& key) {
    return Count(key, L"", machine_.registryEditor.CreateKey(key.hive, key.keyPath));
  }

  void RemoveMadeValues(const KeyHistory& key, const KeyImage& now) {
    for (const RegistryValue& value : now.values) {
      const bool made = Find(key.before, value.name) == nullptr && Holds(key.set, value.name);
      if (!made || !MayChange(key, value.name, &value)) continue;
      Count(key, value.name,
            machine_.registryEditor.DeleteValue(key.hive, key.keyPath, value.name));
    }
  }

  // All at once: some registries take long to save a change. A value that is there keeps its
  // name's spelling when it is set, so it goes first when that is another one.
  void PutValuesBack(const KeyHistory& key, const KeyImage& now) {
    std::vector<RegistryValue> values;
    for (const RegistryValue& value : key.before.values) {
      const RegistryValue* const current = Find(now, value.name);
      if (current != nullptr && *current == value) continue;
      if (!MayChange(key, value.name, current)) continue;
      if (current != nullptr && current->name != value.name) {
        static_cast<void>(
            machine_.registryEditor.DeleteValue(key.hive, key.keyPath, current->name));
      }
      values.push_back(value);
    }
    if (values.empty()) return;
    if (Count(key, L"", machine_.registryEditor.SetValues(key.hive, key.keyPath, values))) {
      report_.restored += values.size() - 1;
    }
  }

  bool MayChange(const KeyHistory& key, const std::wstring& name, const RegistryValue* current) {
    if (choice_.force || IsOwn(key, name, current)) return true;
    report_.kept.push_back(L"Kept, as it was changed since: " + NameOf(key, name));
    return false;
  }

  // What is gone is nobody's work.
  static bool IsOwn(const KeyHistory& key, const std::wstring& name, const RegistryValue* current) {
    if (current == nullptr || (key.unfinished && Holds(key.set, name))) return true;
    return key.after && IsSame(Find(*key.after, name), current);
  }

  static std::wstring NameOf(const KeyHistory& key, const std::wstring& name) {
    const std::wstring path = FullKeyPath(key.hive, key.keyPath);
    return name.empty() ? path : path + L", value " + name;
  }

  bool Count(const KeyHistory& key, const std::wstring& name, SystemCode code) {
    if (code == kSystemOk) {
      ++report_.restored;
      return true;
    }
    report_.problems.push_back(L"Not put back: " + NameOf(key, name) + L": " +
                               DescribeSystemCode(code));
    return false;
  }

  void RemoveMadeKey(const KeyHistory& key) {
    if (key.before.exists) return;
    const KeyImage now = ImageNow(key);
    if (!now.exists) return;
    const auto subkeys = machine_.registry.SubkeyNames(key.hive, key.keyPath);
    if (now.values.empty() && subkeys && subkeys->empty()) {
      Count(key, L"", machine_.registryEditor.DeleteTree(key.hive, key.keyPath));
    } else {
      report_.kept.push_back(L"Kept, as it holds what was added since: " + NameOf(key, L""));
    }
  }

  const RestorePoint& point_;
  const UndoChoice& choice_;
  const Machine& machine_;
  UndoReport& report_;
  std::vector<const KeyHistory*> restored_;
};

}  // namespace

void UndoKeys(const RestorePoint& point, const UndoChoice& choice, const Machine& machine,
              UndoReport& report) {
  KeyUndo(point, choice, machine, report).Run();
}

}  // namespace carrovan
