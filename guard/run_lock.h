#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/machine.h"

namespace carrovan {

// The right to change a user's settings, which one run has at a time, be it the wizard's or the
// command line's. What only reads, and an export, need none. The system frees it when its owner is
// killed.
class RunLock {
 public:
  // Null while another run has it; the reason then names that one and what it does: "carrovan-cli
  // import, process 1234". Where no lock can be made, as on a full disk, there is an object that
  // locks nothing: that must keep nobody from undoing a run.
  static OrReason<RunLock> Take(const Machine& machine, std::wstring_view verb);

  ~RunLock();
  RunLock(const RunLock&) = delete;
  RunLock& operator=(const RunLock&) = delete;

 private:
  RunLock(FileSystem& files, std::wstring folder);

  SystemCode TryHold();
  std::wstring ReadOwner() const;
  void NoteOwner(const std::wstring& owner);

  FileSystem& files_;
  std::wstring folder_;
  std::wstring lockPath_;
  std::wstring ownerPath_;  // beside it, since nobody can read a file that is held
  bool madeFolder_ = false;
  bool isHeld_ = false;
};

}  // namespace carrovan
