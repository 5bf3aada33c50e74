#include "platform/sandbox/sandbox_interpreter.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/posix/host_file_system.h"
#include "platform/registry_tool.h"
#include "platform/sandbox/registry_text_file.h"
#include "registry_text/registry_file_parser.h"
#include "registry_text/registry_file_writer.h"
#include "registry_text/registry_key.h"

namespace carrovan {
namespace {

// Takes the text in front of a mark, and the mark, off a command line.
std::optional<std::wstring> TakeUntil(std::wstring_view& line, std::wstring_view mark) {
  const std::size_t end = line.find(mark);
  if (end == std::wstring_view::npos) return std::nullopt;
  std::wstring taken(line.substr(0, end));
  line.remove_prefix(end + mark.size());
  return taken;
}

bool Take(std::wstring_view& line, std::wstring_view text) {
  if (!line.starts_with(text)) return false;
  line.remove_prefix(text.size());
  return true;
}

// One backslash between two names and none at the ends.
std::wstring TidyKeyPath(std::wstring_view path) {
  std::wstring tidy;
  for (auto name = TakeKeyName(path); !name.empty(); name = TakeKeyName(path)) {
    if (!tidy.empty()) tidy.push_back(L'\\');
    tidy.append(name);
  }
  return tidy;
}

}  // namespace

std::unique_ptr<RunningTool> SandboxInterpreter::Start(const std::wstring& parameters) {
  std::wstring_view line = parameters;
  bool succeeded = false;
  if (Take(line, L"/C reg export \"")) {
    const auto key = TakeUntil(line, L"\" \"");
    const auto file = TakeUntil(line, L"\" /y");
    succeeded = key && file && line.empty() && Export(*key, *file);
  } else if (Take(line, L"/C reg import \"")) {
    const auto file = TakeUntil(line, L"\"");
    succeeded = file && !file->empty() && line.empty() && Import(*file);
  }
  return std::make_unique<EndedTool>(succeeded);
}

bool SandboxInterpreter::Export(std::wstring_view key, const std::wstring& file) const {
  const auto target = paths_.ToHost(file);
  const auto hive = HiveOfRoot(TakeKeyName(key));
  if (!target || !paths_.MayBeMade(file) || !hive) return false;
  const RegistryKey* found = registry_.Find(*hive, key);
  if (found == nullptr) return false;
  RegistryTextFile written(*target);
  WriteRegistryFile(*hive, TidyKeyPath(key), *found, RegistryFileForm::kExport,
                    [&written](std::u16string_view part) { written.Add(part); });
  return written.Finish() == FileStatus::kDone && written.Complete() == FileStatus::kDone;
}

bool SandboxInterpreter::Import(const std::wstring& file) {
  const auto source = paths_.ToHost(file);
  std::vector<std::uint8_t> content;
  if (!source || ReadHostFile(*source, content) != FileStatus::kDone) return false;
  const std::u16string text = RegistryTextOf(std::move(content));
  const auto parsed = ParseRegistryUnits(text);
  return parsed && registry_.Merge(*parsed);
}

}  // namespace carrovan
