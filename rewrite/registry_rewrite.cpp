#include "rewrite/registry_rewrite.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

#include "platform/text.h"
#include "rewrite/invalid_paths.h"
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

SystemCode Rewrite(const std::wstring& file, const FilePasses& wanted, const RewritePorts& ports) {
  TextPasses passes{InUnits(wanted.replacements), std::nullopt};
  if (wanted.userPaths) passes.user = RegUserOf(ports.user);
  RegTextStream text(std::move(passes), ports.codePage);
  const SystemCode read = ports.files.ReadInParts(
      file, [&](std::string_view part, std::uint64_t bytes) { text.Take(part, bytes); });
  if (read != kSystemOk) return read;
  text.Finish();

  std::vector<DroppedLine> droppedLines;
  TellDroppedLine tell;
  if (ports.dropped != nullptr) {
    tell = [&](std::u16string_view keyLine, std::u16string_view line) {
      droppedLines.push_back({file, FromUtf16(keyLine), FromUtf16(line)});
    };
  }
  const std::size_t dropped =
      wanted.invalidPaths ? DropInvalidPaths(text.Result(), text.Form(), ports.files, tell) : 0;
  if (text.Changed() || dropped > 0) {
    const SystemCode written = ports.files.WriteBytes(file, text.Result());
    if (written != kSystemOk) return written;
  }
  if (ports.dropped != nullptr) {
    std::move(droppedLines.begin(), droppedLines.end(), std::back_inserter(*ports.dropped));
  }
  if (text.KnowsUser()) {
    ports.log.WriteLine(Counted(L"Successfully replaced ", text.UserPaths(), L" user paths"));
  }
  if (dropped > 0) {
    ports.log.WriteLine(Counted(L"Successfully removed ", dropped,
                                L" registry entries with invalid absolute paths"));
  }
  return kSystemOk;
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
