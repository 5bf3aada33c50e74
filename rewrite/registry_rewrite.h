#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/system_code.h"
#include "platform/system_facts.h"
#include "rewrite/document_text.h"
#include "rewrite/invalid_paths.h"
#include "rewrite/rewrite_ports.h"
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
  PathChecker* paths = nullptr;           // set: lines with invalid paths are dropped
  std::vector<std::u16string> stay = {};  // texts that neither of the first two changes
};

// What becomes of a registry file, from the least on.
enum class RegistryFileFate {
  kStays,
  kIsEdited,
  kLosesLines,  // which trims all the others, also those in front
};

// Edits a registry file that comes in parts. The passes go over a block of lines while it lies in
// the processor's cache, so that their number hardly counts; the result is the same as if each pass
// had gone over the whole text. What is to become of the file has to be known from the first part
// on: a stream that finds more to do than it expects stops, and another one starts again.
class RegistryTextStream {
 public:
  // `report` may be empty. It gets the dropped lines when the file is expected to lose some.
  RegistryTextStream(TextPasses passes, const CodePage& codePage, RegistryFileFate expected,
                     ReportDroppedLine report)
      : passes_(std::move(passes)),
        codePage_(codePage),
        expected_(expected),
        fate_(expected),
        dropped_{std::move(report), {}, 0} {}

  // False when more is to be done than expected; nothing else counts then. Finish comes after the
  // last part.
  bool Take(std::string_view part);
  bool Finish();

  // The file's new bytes since the last call; not for a file that is expected to stay.
  std::string_view TakeOutput();

  // At least what was expected.
  RegistryFileFate Fate() const { return fate_; }

  // After Finish. The user is not known either when the file cannot hold the name.
  bool KnowsUser() const { return passes_.user.has_value(); }
  std::size_t UserPaths() const { return userPaths_; }
  std::size_t DroppedLineCount() const { return dropped_.count; }

 private:
  void Begin();
  bool EditLines(std::string_view lines);
  bool EditBlock(std::string_view block);
  bool Apply(std::u16string& text);
  std::size_t ReplaceUsers(std::u16string& text) const;
  template <typename Char>
  bool Emit(std::basic_string_view<Char> lines, bool edited);

  TextPasses passes_;
  const CodePage& codePage_;
  RegistryFileFate expected_;
  RegistryFileFate fate_;
  std::optional<TextForm> form_;  // known from the first bytes
  bool overLines_ = false;        // a match may go over the end of a line
  std::string pending_;           // the beginning of a line
  std::u16string text_;           // of a block
  std::string encoded_;           // the same for a file that is not UTF-16
  std::string output_;
  std::string given_;
  std::size_t userPaths_ = 0;
  DroppedLines dropped_;
};

// Rewriting of registry files. A file is read whole and, when something in it changed, replaced in
// one step in its own encoding. Each operation gives the code of the reading or writing that
// failed; the file is then as it was and nothing is reported.

struct Replacement {
  std::wstring search;  // empty: replaces nothing
  std::wstring replacement;
};

// Replaces every occurrence; case counts.
SystemCode ReplaceInRegistryFile(const std::wstring& file, const Replacement& replacement,
                                 const RewritePorts& ports);

// Puts the current user's name in the place of another user's in paths of four spellings, and the
// user's profile in the place of %USERPROFILE%; reports the number. Does nothing when the system
// does not know the user's name.
SystemCode ReplaceUserPaths(const std::wstring& file, const RewritePorts& ports);

// Drops the string values that are absolute paths to nothing; reports their number. With none of
// them the file stays as it is and nothing is reported.
SystemCode RemoveInvalidAbsolutePaths(const std::wstring& file, const RewritePorts& ports);

// All of this one after the other, the replacements first, but reading and writing the file once.
SystemCode RewriteRegistryFile(const std::wstring& file,
                               const std::vector<Replacement>& replacements,
                               const RewritePorts& ports);

}  // namespace carrovan
