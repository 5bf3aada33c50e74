#pragma once

#include "platform/archive_library.h"
#include "support/zip/os_file.h"

namespace carrovan {

// What a failure to write a file means to whoever asked for the file.
inline ArchiveResult ResultOfWriting(FileStatus status) {
  if (status == FileStatus::kDone) return ArchiveResult::kDone;
  return status == FileStatus::kDiskFull ? ArchiveResult::kDiskFull
                                         : ArchiveResult::kTargetNotWritable;
}

}  // namespace carrovan
