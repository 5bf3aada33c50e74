#include "rewrite/registry_rewrite.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>

#include "platform/text.h"
#include "rewrite/path_checker.h"
#include "rewrite/reg_text_stream.h"

namespace carrovan {
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

void Report(const RegTextStream& text, LineLog& log) {
  if (text.KnowsUser()) {
    log.WriteLine(Counted(L"Successfully replaced ", text.UserPaths(), L" user paths"));
  }
  if (text.DroppedLineCount() > 0) {
    log.WriteLine(Counted(L"Successfully removed ", text.DroppedLineCount(),
                          L" registry entries with invalid absolute paths"));
  }
}

// Reads the file up to the first block of which more is to be made than the stream expects.
SystemCode Look(const std::wstring& file, RegTextStream& text, const FileReader& files,
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
SystemCode Edit(const std::wstring& file, RegTextStream& text, FileSystem& files,
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
  PathChecker paths(ports.files);
  TextPasses passes{InUnits(wanted.replacements), std::nullopt};
  if (wanted.userPaths) passes.user = RegUserOf(ports.user);
  if (wanted.invalidPaths) passes.paths = &paths;
  std::vector<DroppedLine> dropped;
  TellDroppedLine tell;
  if (ports.dropped != nullptr) {
    tell = [&](std::u16string_view keyLine, std::u16string_view line) {
      dropped.push_back({file, FromUtf16(keyLine), FromUtf16(line)});
    };
  }
  std::uint64_t fileBytes = 0;
  for (RegFileFate expected = RegFileFate::kStays;;) {
    RegTextStream text(passes, ports.codePage, expected, tell);
    const SystemCode code = expected == RegFileFate::kStays
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

SystemCode ReplaceInRegFile(const std::wstring& file, const Replacement& replacement,
                            const RewritePorts& ports) {
  return Rewrite(file, {{replacement}}, ports);
}

SystemCode ReplaceUserPaths(const std::wstring& file, const RewritePorts& ports) {
  return Rewrite(file, {{}, true, false}, ports);
}

SystemCode RemoveInvalidAbsolutePaths(const std::wstring& file, const RewritePorts& ports) {
  return Rewrite(file, {{}, false, true}, ports);
}

SystemCode RewriteRegFile(const std::wstring& file, const std::vector<Replacement>& replacements,
                          const RewritePorts& ports) {
  return Rewrite(file, {replacements, true, true}, ports);
}

}  // namespace carrovan
