#pragma once

#include "platform/windows/handles.h"

namespace carrovan {

// Ties the programs that this one starts to its own end. When this program is killed, the system
// ends them too: a registry tool that lived on would change keys that an undo has just put back.
// Programs started before are not tied, nor is anything once the object is gone. Where the system
// refuses, everything goes on untied.
class SharedEnd {
 public:
  SharedEnd();
  SharedEnd(const SharedEnd&) = delete;
  SharedEnd& operator=(const SharedEnd&) = delete;
  ~SharedEnd();

 private:
  KernelObject job_;
};

}  // namespace carrovan
