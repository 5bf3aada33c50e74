#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "platform/console.h"
#include "platform/registry.h"
#include "platform/xml_dom.h"

namespace carrovan {

// A value of the document that was passed over.
struct PassedOption {
  std::wstring key;   // below the current user's hive
  std::wstring name;  // empty when the whole key was passed over
  std::wstring why;
};

struct OptionMigration {
  bool started = false;                  // false: the document or the root key did not open
  std::size_t written = 0;               // values set
  std::vector<std::wstring> failedKeys;  // keys in which a value could not be set
  std::vector<PassedOption> passed;      // what the registry has no place for
};

// Carries the values of an option document into the registry below the current user's
// SOFTWARE\company\productKey. An element with an attribute "value" is a value, converted to the
// type that the registry's value of this name has; an element without one is a subkey. Makes no
// keys and no values. Why nothing was done goes to the log, except when there is no DOM.
OptionMigration MigrateOptionConfig(const std::wstring& xmlPath, const std::wstring& company,
                                    const std::wstring& productKey, XmlDom& dom,
                                    RegistryEditor& registry, LineLog& log);

// What a value of an existing type becomes: plain text for both kinds of text, a number for a
// number; nothing for any other type. "2025" in the text becomes "2026".
std::optional<RegistryValue> MigratedValue(std::wstring name, const std::wstring& text,
                                           std::uint32_t existingType);

}  // namespace carrovan
