#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/code_page.h"
#include "rewrite/text_form.h"
#include "rewrite/user_paths.h"

namespace carrovan {

struct UnitReplacement {
  std::u16string search;
  std::u16string replacement;
};

// What is to be done to a registry file's text, in this order.
struct TextPasses {
  std::vector<UnitReplacement> replacements;
  std::optional<RegUser> user;
};

// Edits a registry file that comes in parts. The passes go over a block of lines while it lies in
// the processor's cache, so that their number hardly counts, and the result is the only copy of the
// text; it is the same as if each pass had gone over the whole text.
class RegTextStream {
 public:
  RegTextStream(TextPasses passes, const CodePage& codePage)
      : passes_(std::move(passes)), codePage_(codePage) {}

  void Take(std::string_view part, std::uint64_t fileBytes);
  // After the last part.
  void Finish();

  // After Finish: the file's new bytes and their form, whether they differ from the old ones, and
  // the number of user paths replaced.
  std::string& Result() { return result_; }
  const TextForm& Form() const { return *form_; }
  bool Changed() const { return changed_; }
  std::size_t UserPaths() const { return userPaths_; }
  // False when the file cannot hold the user's name, or there was none to begin with.
  bool KnowsUser() const { return passes_.user.has_value(); }

 private:
  void Begin();
  void EditLines(std::string_view lines);
  bool Apply(std::u16string& text);

  TextPasses passes_;
  const CodePage& codePage_;
  std::optional<TextForm> form_;  // known from the first bytes
  bool overLines_ = false;        // a match may go over the end of a line
  std::string pending_;           // the beginning of a line
  std::string result_;
  bool changed_ = false;
  std::size_t userPaths_ = 0;
};

}  // namespace carrovan
