#pragma once

#include "platform/file_system.h"
#include "platform/xml_dom.h"

namespace carrovan {

// The DOM on libxml2, its documents read and written through a file system. Documents may be nested
// to any depth. A document with a type definition is refused before anything in it is expanded.
class LibXml2Dom : public XmlDom {
 public:
  explicit LibXml2Dom(FileSystem& files) : files_(files) {}

  std::unique_ptr<XmlSession> Begin() override;

 private:
  FileSystem& files_;
};

}  // namespace carrovan
