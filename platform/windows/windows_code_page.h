#pragma once

#include <memory>
#include <string>

#include "platform/system_facts.h"
#include "text/xml_text.h"

namespace carrovan {

// The code page that the system is set to.
class WindowsCodePage : public CodePage {
 public:
  std::u16string Decode(std::string_view bytes) const override;
  std::string Encode(std::u16string_view text) const override;
};

// Encodes as the system's code page of that name does; only what the code page reads back as the
// same character counts as held by it. Null for a name that the system does not know.
std::unique_ptr<DocumentEncoder> OpenCodePageEncoder(const std::string& encoding);

}  // namespace carrovan
