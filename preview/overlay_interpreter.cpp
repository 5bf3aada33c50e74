#include "preview/overlay_interpreter.h"

#include "platform/ended_command.h"
#include "platform/read_reg_file.h"
#include "platform/reg_file_apply.h"
#include "platform/registry_command.h"

namespace carrovan {
std::unique_ptr<RunningCommand> OverlayInterpreter::Start(const std::wstring& parameters) {
  const auto file = ImportedFile(parameters);
  return std::make_unique<EndedCommand>(file && Import(*file));
}

bool OverlayInterpreter::Import(const std::wstring& file) {
  const auto parsed = ReadRegFile(files_, file);
  return parsed && ApplyRegFile(*parsed, registry_) == kSystemOk;
}

}  // namespace carrovan
