#include "rewrite/text_form.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "platform/text.h"

namespace carrovan {
namespace {

static_assert(std::endian::native == std::endian::little, "units are copied as they lie in a file");

constexpr std::string_view kUtf16Mark = "\xFF\xFE";

template <typename Char>
bool IsAscii(std::basic_string_view<Char> text) {
  unsigned all = 0;
  for (const Char c : text) all |= static_cast<unsigned>(c);
  return (all & ~0x7Fu) == 0;
}

// Behind the next line end; the end of the text when there is none.
std::size_t LineEndBehind(std::string_view body, std::size_t from, std::size_t unitBytes) {
  for (; from < body.size(); ++from) {
    from = body.find('\n', from);
    if (from == std::string_view::npos) return body.size();
    if (unitBytes == 1) return from + 1;
    if (from % 2 == 0 && body[from + 1] == '\0') return from + 2;
  }
  return body.size();
}

}  // namespace

TextForm::TextForm(std::string_view fileBytes, const CodePage& codePage)
    : codePage_(&codePage), isUtf16_(fileBytes.starts_with(kUtf16Mark)) {}

TextForm TextForm::OfDocument(std::string_view fileBytes, const CodePage& codePage) {
  TextForm form(fileBytes, codePage);
  form.isUtf8_ = !form.isUtf16_ && IsUtf8(fileBytes);
  return form;
}

std::string_view TextForm::Mark(std::string_view fileBytes) const {
  return fileBytes.substr(0, isUtf16_ ? kUtf16Mark.size() : 0);
}

std::string_view TextForm::Body(std::string_view fileBytes) const {
  fileBytes.remove_prefix(Mark(fileBytes).size());
  fileBytes.remove_suffix(fileBytes.size() % UnitBytes());
  return fileBytes;
}

std::string_view TextForm::Rest(std::string_view fileBytes) const {
  return fileBytes.substr(fileBytes.size() - fileBytes.size() % UnitBytes());
}

std::u16string TextForm::Decode(std::string_view body) const {
  std::u16string text;
  Decode(body, text);
  return text;
}

void TextForm::Decode(std::string_view body, std::u16string& text) const {
  if (isUtf16_) {
    text.resize(body.size() / 2);
    std::memcpy(text.data(), body.data(), text.size() * 2);
  } else if (IsAscii(body)) {
    text.assign(body.begin(), body.end());
  } else {
    text = isUtf8_ ? ToUtf16(FromUtf8(body)) : codePage_->Decode(body);
  }
}

std::string TextForm::Encode(std::u16string_view text) const {
  std::string bytes;
  AppendEncoded(text, bytes);
  return bytes;
}

void TextForm::AppendEncoded(std::u16string_view text, std::string& bytes) const {
  if (isUtf16_) {
    bytes.append(BytesOf(text));
  } else if (IsAscii(text)) {
    for (const char16_t c : text) bytes.push_back(static_cast<char>(c));
  } else {
    bytes += isUtf8_ ? ToUtf8(FromUtf16(text)) : codePage_->Encode(text);
  }
}

bool TextForm::CanHold(std::u16string_view text) const { return Decode(Encode(text)) == text; }

std::string_view TakeWholeLines(std::string_view& body, std::size_t leastBytes,
                                std::size_t unitBytes) {
  const std::size_t from = std::min(leastBytes, body.size());
  const std::size_t end = LineEndBehind(body, from == 0 ? 0 : from - unitBytes, unitBytes);
  const std::string_view lines = body.substr(0, end);
  body.remove_prefix(end);
  return lines;
}

std::size_t LastLineEnd(std::string_view body, std::size_t from, std::size_t unitBytes) {
  std::size_t at = body.size() - body.size() % unitBytes;
  while (at >= from + unitBytes) {
    at -= unitBytes;
    if (body[at] == '\n' && (unitBytes == 1 || body[at + 1] == '\0')) return at + unitBytes;
  }
  return 0;
}

}  // namespace carrovan
