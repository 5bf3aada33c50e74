#include "rewrite/option_migration.h"

#include <utility>

#include "environment/installed_versions.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr RegistryHive kUser = RegistryHive::kCurrentUser;
constexpr char kValueAttribute[] = "value";

class OptionWriter {
 public:
  explicit OptionWriter(RegistryEditor& registry) : registry_(registry) {}

  // Both keys and nodes may nest deeper than the program's stack could.
  OptionMigration Run(const XmlNode& root, const std::wstring& keyPath) {
    done_.started = true;
    Enter(root, keyPath);
    while (!levels_.empty()) {
      const XmlNode node = levels_.back().next;
      if (!node) {
        levels_.pop_back();
        continue;
      }
      levels_.back().next = node.NextSibling();
      if (IsKey(node)) EnterIfThere(node, levels_.back().keyPath + L"\\" + FromUtf8(node.Name()));
    }
    return std::move(done_);
  }

 private:
  struct Level {
    XmlNode next;  // the next child to look at
    std::wstring keyPath;
  };

  static bool IsKey(const XmlNode& node) {
    return node.IsElement() && !node.Attribute(kValueAttribute);
  }

  void EnterIfThere(const XmlNode& node, const std::wstring& keyPath) {
    if (registry_.TryOpen(kUser, keyPath) == kSystemOk) {
      Enter(node, keyPath);
    } else {
      done_.passed.push_back({keyPath, L"", L"the key does not exist here"});
    }
  }

  // All values of a level are written before any of its subkeys is visited.
  void Enter(const XmlNode& node, const std::wstring& keyPath) {
    std::vector<RegistryValue> values;
    for (XmlNode child = node.FirstChild(); child; child = child.NextSibling()) {
      if (auto value = ValueOf(child, keyPath)) values.push_back(std::move(*value));
    }
    Write(keyPath, values);
    levels_.push_back({node.FirstChild(), keyPath});
  }

  std::optional<RegistryValue> ValueOf(const XmlNode& node, const std::wstring& keyPath) {
    if (!node.IsElement()) return std::nullopt;
    const auto text = node.Attribute(kValueAttribute);
    if (!text) return std::nullopt;
    std::wstring name = FromUtf8(node.Name());
    const auto type = registry_.ValueType(kUser, keyPath, name);
    auto value = type ? MigratedValue(name, *text, *type) : std::nullopt;
    if (!value) {
      done_.passed.push_back({keyPath, std::move(name),
                              type ? L"the value here is neither text nor a number"
                                   : L"the value does not exist here"});
    }
    return value;
  }

  void Write(const std::wstring& keyPath, const std::vector<RegistryValue>& values) {
    if (values.empty()) return;
    if (registry_.SetValues(kUser, keyPath, values) == kSystemOk) {
      done_.written += values.size();
    } else {
      done_.failedKeys.push_back(keyPath);
    }
  }

  RegistryEditor& registry_;
  std::vector<Level> levels_;  // the key at hand and those above it
  OptionMigration done_;
};

}  // namespace

OptionMigration MigrateOptionConfig(const std::wstring& xmlPath, const std::wstring& company,
                                    const std::wstring& productKey, XmlDom& dom,
                                    RegistryEditor& registry, LineLog& log) {
  const auto session = dom.Begin();
  const auto document = session->NewDocument();
  if (document == nullptr) return {};
  if (!document->Load(xmlPath)) {
    log.WriteLine(L"XML loading failed: " + document->LoadProblem());
    return {};
  }
  const std::wstring keyPath = L"SOFTWARE\\" + company + L"\\" + productKey;
  if (const SystemCode code = registry.TryOpen(kUser, keyPath); code != kSystemOk) {
    log.WriteLine(L"Failed to open registry key " + keyPath + L"! Error code: " +
                  std::to_wstring(code));
    return {};
  }
  return OptionWriter(registry).Run(document->Root(), keyPath);
}

std::optional<RegistryValue> MigratedValue(std::wstring name, const std::wstring& text,
                                           std::uint32_t existingType) {
  const std::wstring moved = ReplaceAll(text, L"2025", L"2026");
  switch (existingType) {
    case kRegSz:
    case kRegExpandSz:
      return MakeStringValue(std::move(name), moved);
    case kRegDword:
      return MakeDwordValue(std::move(name), static_cast<std::uint32_t>(LeadingInteger(moved)));
    default:
      return std::nullopt;
  }
}

}  // namespace carrovan
