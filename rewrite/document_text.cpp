#include "rewrite/document_text.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "text/text.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace carrovan {
namespace {

// Nothing has to move.
std::size_t ReplaceWithEqualLength(std::u16string& text, std::size_t hit,
                                   std::u16string_view search, std::u16string_view replacement) {
  std::size_t count = 0;
  for (; hit != kNotFound; hit = FindUnits(text, search, hit + search.size())) {
    replacement.copy(text.data() + hit, replacement.size());
    ++count;
  }
  return count;
}

}  // namespace

std::size_t ReplaceUnits(std::u16string& text, std::u16string_view search,
                         std::u16string_view replacement) {
  std::size_t hit = FindUnits(text, search);
  if (hit == kNotFound) return 0;
  if (search.size() == replacement.size()) {
    return ReplaceWithEqualLength(text, hit, search, replacement);
  }
  std::u16string result;
  result.reserve(text.size() + text.size() / 8);
  std::size_t count = 0;
  std::size_t from = 0;
  for (; hit != kNotFound; hit = FindUnits(text, search, from)) {
    result.append(text, from, hit - from).append(replacement);
    from = hit + search.size();
    ++count;
  }
  result.append(text, from);
  text.swap(result);
  return count;
}

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

SystemCode DecodeDocument(std::string_view bytes, const CodePage& codePage, std::u16string& text,
                          bool& holdsAnyCharacter) {
  const TextForm form = TextForm::OfDocument(bytes, codePage);
  if (IsInAnotherEncoding(form, bytes)) return kInvalidData;
  text = form.Decode(form.Body(bytes));
  holdsAnyCharacter = form.IsUtf16() || (form.IsUnicode() && DeclaresUtf8(text));
  return kSystemOk;
}

SystemCode DocumentText::Load(const std::wstring& file) {
  file_ = file;
  if (const SystemCode code = files_.ReadBytes(file, bytes_); code != kSystemOk) return code;
  return DecodeDocument(bytes_, codePage_, text_, holdsAnyCharacter_);
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

namespace {

// Positions that are looked at in one go.
constexpr std::size_t kStride = 16;

#ifdef __SSE2__

// The first and the last unit of a search text.
class Probes {
 public:
  explicit Probes(std::u16string_view search)
      : distance_(search.size() - 1),
        first_(_mm_set1_epi16(static_cast<short>(search.front()))),
        last_(_mm_set1_epi16(static_cast<short>(search.back()))) {}

  // A bit for each of kStride positions at which a match may begin.
  unsigned BeginningsFrom(const char16_t* at) const {
    const __m128i both = _mm_packs_epi16(Compare(at), Compare(at + kStride / 2));
    return static_cast<unsigned>(_mm_movemask_epi8(both));
  }

 private:
  static __m128i UnitsAt(const char16_t* at) {
    return _mm_loadu_si128(static_cast<const __m128i*>(static_cast<const void*>(at)));
  }

  __m128i Compare(const char16_t* at) const {
    return _mm_and_si128(_mm_cmpeq_epi16(UnitsAt(at), first_),
                         _mm_cmpeq_epi16(UnitsAt(at + distance_), last_));
  }

  std::size_t distance_;
  __m128i first_;
  __m128i last_;
};

#else

// The first unit of a search text.
class Probes {
 public:
  explicit Probes(std::u16string_view search) : first_(search.front()) {}

  // A bit for each of kStride positions at which a match may begin.
  unsigned BeginningsFrom(const char16_t* at) const {
    unsigned bits = 0;
    for (std::size_t i = 0; i < kStride; ++i) bits |= unsigned{at[i] == first_} << i;
    return bits;
  }

 private:
  char16_t first_;
};

#endif

}  // namespace

std::size_t FindUnits(std::u16string_view text, std::u16string_view search, std::size_t from) {
  if (search.empty()) return kNotFound;
  const Probes probes(search);
  const std::size_t reach = kStride + search.size() - 1;
  for (; from < text.size() && text.size() - from >= reach; from += kStride) {
    for (unsigned bits = probes.BeginningsFrom(text.data() + from); bits != 0; bits &= bits - 1) {
      const std::size_t at = from + static_cast<std::size_t>(std::countr_zero(bits));
      if (text.substr(at, search.size()) == search) return at;
    }
  }
  return text.find(search, from);
}

}  // namespace carrovan
