#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace carrovan {

// Which text of a document is kept, for every DOM the same: text of nothing but white space is
// layout and goes, unless xml:space="preserve" holds where it stands. Texts without another node
// between them are one, in however many pieces a DOM delivers them. Is told of a document's nodes
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

}  // namespace carrovan
