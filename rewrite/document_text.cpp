#include "rewrite/document_text.h"

#include <algorithm>

#include "platform/text.h"
#include "rewrite/text_form.h"
#include "rewrite/unit_text.h"

namespace carrovan {
namespace {

// Big-endian UTF-16, and UTF-16 without a mark.
bool IsInAnotherEncoding(const TextForm& form, std::string_view bytes) {
  return !form.IsUtf16() &&
         (bytes.starts_with("\xFE\xFF") || bytes.find('\0') != std::string_view::npos);
}

// True also when the document's first line names no encoding.
bool DeclaresUtf8(std::u16string_view text) {
  const std::u16string_view declaration = text.substr(0, text.find(u'>'));
  const std::size_t name = declaration.find(u"encoding");
  if (declaration.find(u"<?xml") == kNotFound || name == kNotFound) return true;
  const std::size_t quote = declaration.find_first_of(u"\"'", name);
  if (quote == kNotFound) return true;
  const std::u16string_view value = declaration.substr(quote + 1);
  return EqualsIgnoringAsciiCase(FromUtf16(value.substr(0, value.find(declaration[quote]))),
                                 L"UTF-8");
}

}  // namespace

SystemCode DocumentText::Load(const std::wstring& file) {
  file_ = file;
  if (const SystemCode code = files_.ReadBytes(file, bytes_); code != kSystemOk) return code;
  const TextForm form = TextForm::OfDocument(bytes_, codePage_);
  if (IsInAnotherEncoding(form, bytes_)) return kInvalidData;
  text_ = form.Decode(form.Body(bytes_));
  holdsAnyCharacter_ = form.IsUtf16() || (form.IsUnicode() && DeclaresUtf8(text_));
  return kSystemOk;
}

SystemCode DocumentText::Save(std::u16string_view text) {
  const TextForm form = TextForm::OfDocument(bytes_, codePage_);
  std::string bytes(form.Mark(bytes_));
  bytes.append(form.Encode(text)).append(form.Rest(bytes_));
  if (bytes == bytes_) return kSystemOk;
  const std::wstring leftover = file_ + L".tmp";
  if (files_.Exists(leftover)) {
    if (const SystemCode code = files_.RemoveFile(leftover); code != kSystemOk) return code;
  }
  return files_.WriteBytes(file_, bytes);
}

std::u16string_view TakeLine(std::u16string_view& text) {
  const std::size_t end = text.find(u'\n');
  std::u16string_view line = text.substr(0, end);
  if (end != kNotFound && line.ends_with(u'\r')) line.remove_suffix(1);
  text.remove_prefix(end == kNotFound ? text.size() : end + 1);
  return line;
}

}  // namespace carrovan
