#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace carrovan {

// Which text of a document is kept, for every DOM the same: text of nothing but white space is
// layout and goes, unless xml:space="preserve" holds where it stands. Texts without another node
// between them are one, in however many pieces a DOM delivers them. Is given a document's nodes
// in their order, by whoever builds or walks the tree.
template <typename Char>
class BlankTextFilter {
 public:
  using View = std::basic_string_view<Char>;

  // The value of the element's xml:space, when it has one.
  void EnterElement(std::optional<View> space) {
    EndText();
    const bool inherited = !preserved_.empty() && preserved_.back();
    preserved_.push_back(space && Is(*space, "preserve")  ? true
                         : space && Is(*space, "default") ? false
                                                          : inherited);
  }

  void LeaveElement() {
    EndText();
    preserved_.pop_back();
  }

  // A comment, an instruction or a CDATA section: the texts at its sides are two.
  void EndText() {
    heldBack_.clear();
    textIsKept_ = false;
  }

  // Takes the next piece of a text. Returns what of the text is to be added to the tree now, which
  // may begin with pieces that came before; nothing as long as all is white space. The view holds
  // until the next call.
  View Take(View piece) {
    if (textIsKept_) return piece;
    const bool preserves = !preserved_.empty() && preserved_.back();
    textIsKept_ = preserves || !std::all_of(piece.begin(), piece.end(), IsBlank);
    if (textIsKept_ && heldBack_.empty()) return piece;
    heldBack_ += piece;
    return textIsKept_ ? View(heldBack_) : View();
  }

 private:
  static bool IsBlank(Char c) {
    return c == Char{' '} || c == Char{'\t'} || c == Char{'\n'} || c == Char{'\r'};
  }

  static bool Is(View value, std::string_view word) {
    return std::equal(value.begin(), value.end(), word.begin(), word.end(),
                      [](Char a, char b) { return a == static_cast<Char>(b); });
  }

  std::vector<bool> preserved_;  // for each open element, whether its blank text is kept
  std::basic_string<Char> heldBack_;
  bool textIsKept_ = false;  // the text that is being delivered
};

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
