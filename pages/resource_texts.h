#pragma once

#include "environment/string_table.h"
#include "platform/windows/resource_module.h"

namespace carrovan {

// The texts of the user's language; in English what it lacks.
class ResourceTexts : public TextSource {
 public:
  explicit ResourceTexts(const ResourceModule& resources) : resources_(resources) {}

  std::wstring Text(StringId id) const override {
    const std::wstring text = resources_.Text(static_cast<int>(id));
    return text.empty() ? EnglishTexts().Text(id) : text;
  }

 private:
  const ResourceModule& resources_;
};

}  // namespace carrovan
