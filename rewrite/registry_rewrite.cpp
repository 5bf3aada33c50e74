#include "rewrite/registry_rewrite.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>

#include "rewrite/document_text.h"
#include "rewrite/invalid_paths.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr std::size_t kBlockBytes = std::size_t{16} << 10;
constexpr std::size_t kMarkBytes = 2;

}  // namespace

bool RegistryTextStream::Take(std::string_view part) {
  std::size_t searched = form_ ? pending_.size() : 0;
  pending_.append(part);
  if (!form_ && pending_.size() >= kMarkBytes) Begin();
  if (!form_ || overLines_) return true;
  searched -= searched % form_->UnitBytes();
  const std::size_t end = LastLineEnd(pending_, searched, form_->UnitBytes());
  if (!EditLines(std::string_view(pending_).substr(0, end))) return false;
  pending_.erase(0, end);
  return true;
}

bool RegistryTextStream::Finish() {
  if (!form_) Begin();
  const std::size_t whole = pending_.size() - pending_.size() % form_->UnitBytes();
  if (!EditLines(std::string_view(pending_).substr(0, whole))) return false;
  output_.append(pending_, whole);
  return true;
}

std::string_view RegistryTextStream::TakeOutput() {
  given_.swap(output_);
  output_.clear();
  return given_;
}

void RegistryTextStream::Begin() {
  form_.emplace(pending_, codePage_);
  output_ = form_->Mark(pending_);
  pending_.erase(0, output_.size());
  std::optional<RegUser>& user = passes_.user;
  if (user && !form_->CanHold(user->rule.name)) user.reset();
  if (user && !form_->CanHold(user->profile)) user->profile.clear();
  overLines_ = std::ranges::any_of(passes_.replacements, [](const UnitReplacement& each) {
    return each.search.find(u'\n') != kNotFound;
  });
}

bool RegistryTextStream::EditLines(std::string_view lines) {
  const std::size_t blockBytes = overLines_ ? lines.size() : kBlockBytes;
  while (!lines.empty()) {
    if (!EditBlock(TakeWholeLines(lines, blockBytes, form_->UnitBytes()))) return false;
  }
  return true;
}

bool RegistryTextStream::EditBlock(std::string_view block) {
  form_->Decode(block, text_);
  const bool edited = Apply(text_);
  if (form_->IsUtf16()) return Emit<char16_t>(text_, edited);
  if (!edited) return Emit(block, edited);
  encoded_.clear();
  form_->AppendEncoded(text_, encoded_);
  return Emit<char>(encoded_, edited);
}

// Whether the text was changed.
bool RegistryTextStream::Apply(std::u16string& text) {
  std::size_t count = 0;
  for (const UnitReplacement& each : passes_.replacements) {
    count += ReplaceBetween(text, passes_.stay, [&each](std::u16string& stretch) {
      return ReplaceUnits(stretch, each.search, each.replacement);
    });
  }
  if (!passes_.user) return count > 0;
  const std::size_t users =
      ReplaceBetween(text, passes_.stay, [this](auto& stretch) { return ReplaceUsers(stretch); });
  userPaths_ += users;
  return count + users > 0;
}

std::size_t RegistryTextStream::ReplaceUsers(std::u16string& text) const {
  std::size_t count = ReplaceUserNames(text, passes_.user->rule);
  if (!passes_.user->profile.empty()) {
    count += ReplaceUnits(text, u"%USERPROFILE%", passes_.user->profile);
  }
  return count;
}

template <typename Char>
bool RegistryTextStream::Emit(std::basic_string_view<Char> lines, bool edited) {
  if (expected_ == RegistryFileFate::kLosesLines) {
    AppendOtherLines(lines, *form_, *passes_.paths, dropped_, output_);
    return true;
  }
  if (passes_.paths != nullptr && HoldsInvalidPath(lines, *form_, *passes_.paths)) {
    fate_ = RegistryFileFate::kLosesLines;
  } else if (edited) {
    fate_ = RegistryFileFate::kIsEdited;
  }
  if (expected_ == RegistryFileFate::kIsEdited) output_.append(BytesOf(lines));
  return fate_ == expected_;
}

namespace {

std::vector<UnitReplacement> InUnits(const std::vector<Replacement>& replacements) {
  std::vector<UnitReplacement> units;
  units.reserve(replacements.size());
  for (const Replacement& each : replacements) {
    units.push_back({ToUtf16(each.search), ToUtf16(each.replacement)});
  }
  return units;
}

std::wstring Counted(std::wstring_view front, std::size_t count, std::wstring_view back) {
  return std::wstring(front) + std::to_wstring(count) + std::wstring(back);
}

struct FilePasses {
  std::vector<Replacement> replacements;
  bool userPaths = false;
  bool invalidPaths = false;
};

void Report(const RegistryTextStream& text, LineLog& log) {
  if (text.KnowsUser()) {
    log.WriteLine(Counted(L"Successfully replaced ", text.UserPaths(), L" user paths"));
  }
  if (text.DroppedLineCount() > 0) {
    log.WriteLine(Counted(L"Successfully removed ", text.DroppedLineCount(),
                          L" registry entries with invalid absolute paths"));
  }
}

// Reads the file up to the first block of which more is to be made than the stream expects.
SystemCode Look(const std::wstring& file, RegistryTextStream& text, const FileReader& files,
                std::uint64_t& fileBytes) {
  bool asExpected = true;
  const SystemCode code = files.ReadInParts(file, [&](std::string_view part, std::uint64_t bytes) {
    fileBytes = bytes;
    asExpected = text.Take(part);
    return asExpected;
  });
  if (code == kSystemOk && asExpected) static_cast<void>(text.Finish());
  return code;
}

// The same, and replaces the file when all is as expected.
SystemCode Edit(const std::wstring& file, RegistryTextStream& text, FileSystem& files,
                std::uint64_t fileBytes) {
  std::unique_ptr<FileReplacement> replacement;
  SystemCode written = files.BeginReplacement(file, fileBytes, replacement);
  if (written != kSystemOk) return written;
  bool asExpected = true;
  const SystemCode read = files.ReadInParts(file, [&](std::string_view part, std::uint64_t) {
    asExpected = text.Take(part);
    if (asExpected) written = replacement->Append(text.TakeOutput());
    return asExpected && written == kSystemOk;
  });
  if (read != kSystemOk || written != kSystemOk) return read != kSystemOk ? read : written;
  if (!asExpected || !text.Finish()) return kSystemOk;
  written = replacement->Append(text.TakeOutput());
  return written == kSystemOk ? replacement->Complete() : written;
}

SystemCode Rewrite(const std::wstring& file, const FilePasses& wanted, const RewritePorts& ports) {
  PathChecker paths(ports.files, ports.mappedTo);
  TextPasses passes;
  passes.replacements = InUnits(wanted.replacements);
  if (wanted.userPaths) passes.user = RegUserOf(ports.user);
  if (wanted.invalidPaths && !ports.keepsDeadPaths) passes.paths = &paths;
  passes.stay = ports.stay;
  std::vector<DroppedLine> dropped;
  ReportDroppedLine report;
  if (ports.dropped != nullptr) {
    report = [&](std::u16string_view keyLine, std::u16string_view line) {
      dropped.push_back({file, FromUtf16(keyLine), FromUtf16(line)});
    };
  }
  std::uint64_t fileBytes = 0;
  for (RegistryFileFate expected = RegistryFileFate::kStays;;) {
    RegistryTextStream text(passes, ports.codePage, expected, report);
    const SystemCode code = expected == RegistryFileFate::kStays
                                ? Look(file, text, ports.files, fileBytes)
                                : Edit(file, text, ports.files, fileBytes);
    if (code != kSystemOk) return code;
    if (text.Fate() == expected) {
      if (ports.dropped != nullptr) std::ranges::move(dropped, std::back_inserter(*ports.dropped));
      Report(text, ports.log);
      return kSystemOk;
    }
    expected = text.Fate();
  }
}

}  // namespace

SystemCode ReplaceInRegistryFile(const std::wstring& file, const Replacement& replacement,
                                 const RewritePorts& ports) {
  return Rewrite(file, {{replacement}}, ports);
}

SystemCode ReplaceUserPaths(const std::wstring& file, const RewritePorts& ports) {
  return Rewrite(file, {{}, true, false}, ports);
}

SystemCode RemoveInvalidAbsolutePaths(const std::wstring& file, const RewritePorts& ports) {
  return Rewrite(file, {{}, false, true}, ports);
}

SystemCode RewriteRegistryFile(const std::wstring& file,
                               const std::vector<Replacement>& replacements,
                               const RewritePorts& ports) {
  return Rewrite(file, {replacements, true, true}, ports);
}

}  // namespace carrovan
