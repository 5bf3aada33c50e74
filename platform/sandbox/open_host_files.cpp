#include "platform/sandbox/mapped_files.h"

namespace carrovan {

std::unique_ptr<HostFiles> OpenHostFiles() {
  return std::make_unique<MappedFiles>(std::make_unique<HostPathMapper>());
}

}  // namespace carrovan
