#pragma once

#include "restore/change_recorder.h"

namespace carrovan {

// Makes one change of what lies at a path, noted before and after. Gives what `change` gives, or
// `refusal` of the code when it could not be noted, in which case it is not made.
template <typename Change, typename Refusal>
auto MakeRecorded(ChangeRecorder& recorder, const std::wstring& path, Change change,
                  Refusal refusal) {
  if (recorder.IsScratch(path)) return change();
  if (const SystemCode code = recorder.FileChanges(path); code != kSystemOk) return refusal(code);
  auto result = change();
  recorder.FileChanged(path);
  return result;
}

// The same for an operation whose result is a code.
template <typename Change>
SystemCode MakeRecorded(ChangeRecorder& recorder, const std::wstring& path, Change change) {
  return MakeRecorded(recorder, path, change, [](SystemCode code) { return code; });
}

}  // namespace carrovan
