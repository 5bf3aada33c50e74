#pragma once

#include <optional>
#include <string>

#include "environment/product_context.h"
#include "platform/machine.h"

namespace carrovan {

// Folders directly in the temporary path that a run makes for itself, named by a GUID without
// braces. A file in the folder, held by the process, is the mark that the folder may go when the
// process is gone. Paths of folders come without a trailing backslash.

inline constexpr wchar_t kRunFolderMark[] = L"~carrovan.lock";

// The path of such a folder with a fresh GUID. Nothing when the system gives no temporary path or
// no GUID.
std::optional<std::wstring> NewRunFolderPath(const Machine& machine);

// The folder was just made, by this run. When it cannot be marked, nobody else will remove it.
void MarkRunFolder(FileSystem& files, const std::wstring& folder);

// Takes the mark off: from now on the folder may hold the only copy of something, and stays if the
// process ends without removing it.
void KeepRunFolder(FileSystem& files, const std::wstring& folder);

// Deletes the folder with its content, the mark last; true when everything is gone.
bool WipeRunFolder(FileSystem& files, const std::wstring& folder);

// Makes room at a path in such a folder: whatever lies there goes. True when nothing does.
bool ClearPath(FileSystem& files, const std::wstring& path);

// Deletes the marked folders of processes that are gone, as a kill or a power failure leaves them.
// What is in use, not marked or a link stays. To be called with the machine itself, before a run.
void SweepRunFolders(const Machine& machine);

// The staging folder is where a package's pieces are prepared and where a package is unpacked: a
// fresh folder below the temporary path, named by a GUID without braces.

// Creates the folder and stores its path, with a trailing backslash, in `stagingFolder`. A folder
// of that name that is there already is taken. False, with the context unchanged, when the system
// gives no temporary path or no GUID, or the folder cannot be made.
bool CreateStagingFolder(ProductContext& context, const Machine& machine);

// Deletes the folder with its content; nothing happens when there is none.
void DeleteStagingFolder(const ProductContext& context, const Machine& machine);

// Deletes the old folder, creates a fresh one and points `packageDescriptionPath` into it.
bool RenewStagingFolder(ProductContext& context, const Machine& machine);

// A staging folder that goes away however the run ends.
class StagingFolder {
 public:
  StagingFolder(ProductContext& context, const Machine& machine)
      : context_(context), machine_(machine), made_(RenewStagingFolder(context, machine)) {}
  ~StagingFolder() {
    if (made_) DeleteStagingFolder(context_, machine_);
  }
  StagingFolder(const StagingFolder&) = delete;
  StagingFolder& operator=(const StagingFolder&) = delete;

  bool IsMade() const { return made_; }

 private:
  ProductContext& context_;
  const Machine& machine_;
  bool made_;
};

}  // namespace carrovan
