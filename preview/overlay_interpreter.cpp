#include "preview/overlay_interpreter.h"

#include <cstdint>
#include <vector>

#include "platform/reg_file_apply.h"
#include "platform/registry_command.h"
#include "platform/text_encoding.h"

namespace carrovan {
namespace {

class EndedCommand : public RunningCommand {
 public:
  explicit EndedCommand(bool succeeded) : succeeded_(succeeded) {}
  bool WaitForEnd() override { return succeeded_; }

 private:
  bool succeeded_;
};

}  // namespace

std::unique_ptr<RunningCommand> OverlayInterpreter::Start(const std::wstring& parameters) {
  const auto file = ImportedFile(parameters);
  return std::make_unique<EndedCommand>(file && Import(*file));
}

bool OverlayInterpreter::Import(const std::wstring& file) {
  std::string bytes;
  if (files_.ReadBytes(file, bytes) != kSystemOk) return false;
  const std::vector<std::uint8_t> content(bytes.begin(), bytes.end());
  const auto parsed = ParseRegFile(DecodeText(content).text);
  return parsed && ApplyRegFile(*parsed, registry_) == kSystemOk;
}

}  // namespace carrovan
