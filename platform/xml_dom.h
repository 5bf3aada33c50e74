#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/file_system.h"
#include "platform/xml_node.h"

namespace carrovan {

class XmlDocument {
 public:
  virtual ~XmlDocument() = default;

  // Drops text of nothing but white space, unless xml:space="preserve" holds; keeps comments,
  // instructions, CDATA and the declaration.
  // False for a file that is missing, not well formed, or has a document type definition.
  [[nodiscard]] virtual bool Load(const std::wstring& path) = 0;
  // Why the last Load gave false, in the parser's own words; one line.
  virtual std::wstring LoadProblem() const = 0;
  // No node when nothing was loaded.
  virtual XmlNode Root() = 0;
  // An element outside the tree; no node when the DOM refuses.
  virtual XmlNode CreateElement(std::string_view name) = 0;
  // Writes the encoding that the document's declaration names, UTF-8 when it names none or when
  // that encoding cannot hold the document; the written declaration says so. What is written loads
  // again. False, and the file is as it was, when that is not so or the file cannot be written.
  [[nodiscard]] virtual bool Save(const std::wstring& path) = 0;
};

// The time during which documents are used; they must be gone before it ends.
class XmlSession {
 public:
  virtual ~XmlSession() = default;

  // False when the DOM could not be started on this thread. Documents may be asked for even so.
  virtual bool Started() const = 0;
  // Null when the DOM cannot make one.
  virtual std::unique_ptr<XmlDocument> NewDocument() = 0;
};

class XmlDom {
 public:
  virtual ~XmlDom() = default;
  virtual std::unique_ptr<XmlSession> Begin() = 0;
};

// The DOM of this system, its documents read and written through the given files.
std::unique_ptr<XmlDom> OpenXmlDom(FileSystem& files);

}  // namespace carrovan
