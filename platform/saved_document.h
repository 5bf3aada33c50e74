#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace carrovan {

// How a document's tree becomes the bytes of a file, the same for every DOM. A document is written
// in the encoding that its declaration names. One that this encoding cannot hold is written in
// UTF-8, and its declaration says so.

struct XmlDeclaration {
  bool present = true;
  std::string version = "1.0";
  std::string encoding;            // empty when it names none
  std::optional<bool> standalone;  // nothing when it does not say
};

// From the declaration's text between "<?xml" and "?>".
XmlDeclaration ReadXmlDeclaration(std::string_view text);

// As it stands in a document, with its line end; empty for one that is not present.
std::string DeclarationText(const XmlDeclaration& declaration);

// A tree that a DOM writes. DOMs differ in how: one encodes as the tree's declaration says, another
// writes UTF-8 whatever the declaration says.
class WritableTree {
 public:
  virtual ~WritableTree() = default;

  // Gives the tree this declaration in place of any other; the text is what stands between "<?xml"
  // and "?>".
  [[nodiscard]] virtual bool Declare(std::string_view text) = 0;
  // The bytes of a file; nothing when the DOM did not write.
  virtual std::optional<std::string> Write() = 0;
};

// What such a tree holds, as UTF-8 and without a declaration: it is declared to be UTF-8, which
// every DOM then writes. Nothing when it cannot be had.
std::optional<std::string> BodyOf(WritableTree& tree);

// The number of bytes of a character of well-formed UTF-8 whose first byte this is.
std::size_t Utf8LengthOf(char lead);

// Turns text into an encoding, part after part.
class DocumentEncoder {
 public:
  virtual ~DocumentEncoder() = default;

  // Appends the bytes of the characters in front of the first one that the encoding lacks. Returns
  // how many bytes of the UTF-8 text that were.
  virtual std::size_t Append(std::string_view utf8, std::string& bytes) = 0;
  // Appends what must stand behind the last character.
  virtual void Finish(std::string& bytes) = 0;
};

// What saving needs of the system.
class SavingSystem {
 public:
  virtual ~SavingSystem() = default;

  // Null for an encoding that the system does not know.
  virtual std::unique_ptr<DocumentEncoder> NewEncoder(const std::string& encoding) = 0;
  // Whether the bytes load as a document.
  virtual bool Loads(std::string_view document) = 0;
  // Whether both load, and as documents of the same nodes.
  virtual bool LoadAlike(std::string_view document, std::string_view other) = 0;
};

// The bytes to write for a document of that declaration and body. They load again, and as what was
// to be saved; nothing when there are no such bytes. A character of a text or an attribute's value
// that the encoding lacks becomes a reference.
std::optional<std::string> BytesToSave(const XmlDeclaration& declaration, std::string body,
                                       SavingSystem& system);

}  // namespace carrovan
