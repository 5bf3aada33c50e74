#pragma once

#include "platform/code_page.h"
#include "platform/file_system.h"
#include "platform/line_log.h"
#include "platform/user_identity.h"

namespace carrovan {

// What the rewriting of a package's files works on. Reports go to the log.
struct RewritePorts {
  FileSystem& files;
  const UserIdentity& user;
  const CodePage& codePage;
  LineLog& log;
};

}  // namespace carrovan
