#include "text/xml_text.h"

#include <cstdint>

#include "text/text.h"

namespace carrovan {
namespace {

constexpr std::string_view kUtf8 = "UTF-8";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

bool IsNamed(std::string_view encoding, std::wstring_view name) {
  return EqualsIgnoringAsciiCase(FromUtf8(encoding), name);
}

bool IsNameOfUtf8(std::string_view encoding) {
  return encoding.empty() || IsNamed(encoding, L"UTF-8") || IsNamed(encoding, L"UTF8");
}

// The value of a name="value" in the text of a declaration; empty when there is none.
std::string PseudoAttribute(std::string_view text, std::string_view name) {
  constexpr std::string_view kQuotes = "\"'";
  for (std::size_t at = text.find(name); at != text.npos; at = text.find(name, at + 1)) {
    const std::size_t first = text.find_first_of(kQuotes, at);
    if (first == text.npos) return {};
    const std::string_view between = text.substr(at + name.size(), first - at - name.size());
    if (between.find_first_not_of(" \t\r\n=") != between.npos) continue;
    const std::size_t last = text.find(text[first], first + 1);
    return std::string(text.substr(first + 1, last == text.npos ? 0 : last - first - 1));
  }
  return {};
}

// The declaration at the beginning of a document; empty when it has none.
std::string_view DeclarationOf(std::string_view document) {
  if (!document.starts_with("<?xml ")) return {};
  const std::size_t end = document.find("?>");
  return end == document.npos ? std::string_view() : document.substr(0, end + 2);
}

class Utf16Encoder : public DocumentEncoder {
 public:
  explicit Utf16Encoder(bool bigEndian) : bigEndian_(bigEndian) {}

  std::size_t Append(std::string_view utf8, std::string& bytes) override {
    if (!begun_) AppendUnit(0xFEFF, bytes);
    begun_ = true;
    for (const char16_t unit : ToUtf16(FromUtf8(utf8))) AppendUnit(unit, bytes);
    return utf8.size();
  }

  void Finish(std::string&) override {}

 private:
  void AppendUnit(char16_t unit, std::string& bytes) const {
    const char low = static_cast<char>(unit & 0xFF);
    const char high = static_cast<char>(unit >> 8);
    bytes.push_back(bigEndian_ ? high : low);
    bytes.push_back(bigEndian_ ? low : high);
  }

  bool bigEndian_;
  bool begun_ = false;
};

std::unique_ptr<DocumentEncoder> NewEncoder(const std::string& encoding, SavingSystem& system) {
  if (IsNamed(encoding, L"UTF-16") || IsNamed(encoding, L"UTF-16LE")) {
    return std::make_unique<Utf16Encoder>(false);
  }
  if (IsNamed(encoding, L"UTF-16BE")) return std::make_unique<Utf16Encoder>(true);
  return system.NewEncoder(encoding);
}

std::string ReferenceTo(std::string_view character) {
  const std::u16string units = ToUtf16(FromUtf8(character));
  std::uint32_t code = units[0];
  if (units.size() == 2) code = 0x10000 + ((code - 0xD800) << 10) + (units[1] - 0xDC00u);
  return "&#" + std::to_string(code) + ";";
}

// Encodes a well-formed document. References are possible in texts and in attributes' values only.
class MarkupEncoding {
 public:
  MarkupEncoding(std::string_view document, DocumentEncoder& encoder)
      : rest_(document), encoder_(encoder) {
    bytes_.reserve(document.size());
  }

  std::optional<std::string> Run() {
    while (!rest_.empty()) {
      if (!PutNext()) return std::nullopt;
    }
    encoder_.Finish(bytes_);
    return std::move(bytes_);
  }

 private:
  [[nodiscard]] bool PutNext() {
    if (!rest_.starts_with('<')) return PutReferring(TakeUpTo("<"));
    if (rest_.starts_with("<!--")) return Put(TakeBehind("-->"));
    if (rest_.starts_with("<![CDATA[")) return Put(TakeBehind("]]>"));
    if (rest_.starts_with("<?")) return Put(TakeBehind("?>"));
    return PutTag();
  }

  [[nodiscard]] bool PutTag() {
    while (true) {
      const std::size_t end = rest_.find_first_of("\"'>");
      if (end == rest_.npos) return Put(Take(rest_.size()));
      const char quote = rest_[end];
      if (!Put(Take(end + 1))) return false;
      if (quote == '>') return true;
      if (!PutReferring(TakeUpTo(std::string_view(&quote, 1))) || !Put(Take(1))) return false;
    }
  }

  [[nodiscard]] bool Put(std::string_view text) {
    return encoder_.Append(text, bytes_) == text.size();
  }

  [[nodiscard]] bool PutReferring(std::string_view text) {
    while (true) {
      text.remove_prefix(encoder_.Append(text, bytes_));
      if (text.empty()) return true;
      const std::string_view lacking = text.substr(0, Utf8LengthOf(text.front()));
      if (!Put(ReferenceTo(lacking))) return false;
      text.remove_prefix(lacking.size());
    }
  }

  std::string_view Take(std::size_t size) {
    const std::string_view taken = rest_.substr(0, size);
    rest_.remove_prefix(taken.size());
    return taken;
  }
  std::string_view TakeUpTo(std::string_view end) { return Take(rest_.find(end)); }
  std::string_view TakeBehind(std::string_view end) {
    const std::size_t at = rest_.find(end);
    return Take(at == rest_.npos ? at : at + end.size());
  }

  std::string_view rest_;
  DocumentEncoder& encoder_;
  std::string bytes_;
};

std::optional<std::string> Encoded(const std::string& encoding, std::string_view document,
                                   SavingSystem& system) {
  const std::unique_ptr<DocumentEncoder> encoder = NewEncoder(encoding, system);
  return encoder == nullptr ? std::nullopt : MarkupEncoding(document, *encoder).Run();
}

}  // namespace

std::size_t Utf8LengthOf(char lead) {
  const auto byte = static_cast<std::uint8_t>(lead);
  return byte < 0x80 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

XmlDeclaration ReadXmlDeclaration(std::string_view text) {
  XmlDeclaration declaration;
  if (std::string version = PseudoAttribute(text, "version"); !version.empty()) {
    declaration.version = std::move(version);
  }
  declaration.encoding = PseudoAttribute(text, "encoding");
  const std::string standalone = PseudoAttribute(text, "standalone");
  if (!standalone.empty()) declaration.standalone = standalone == "yes";
  return declaration;
}

std::string DeclarationText(const XmlDeclaration& declaration) {
  if (!declaration.present) return {};
  std::string text = "<?xml version=\"" + declaration.version + "\"";
  if (!declaration.encoding.empty()) text += " encoding=\"" + declaration.encoding + "\"";
  if (declaration.standalone)
    text += *declaration.standalone ? " standalone=\"yes\"" : " standalone=\"no\"";
  return text + "?>\n";
}

std::optional<std::string> BodyOf(WritableTree& tree) {
  if (!tree.Declare("version=\"1.0\" encoding=\"UTF-8\"")) return std::nullopt;
  std::optional<std::string> bytes = tree.Write();
  if (!bytes) return std::nullopt;
  if (bytes->starts_with(kUtf8Mark)) bytes->erase(0, kUtf8Mark.size());
  const std::string_view declaration = DeclarationOf(*bytes);
  const bool isUtf8 = IsNameOfUtf8(PseudoAttribute(declaration, "encoding")) && IsUtf8(*bytes);
  if (!isUtf8) return std::nullopt;
  const std::size_t first = bytes->find_first_not_of("\r\n", declaration.size());
  bytes->erase(0, first);
  return bytes;
}

std::optional<std::string> BytesToSave(const XmlDeclaration& declaration, std::string body,
                                       SavingSystem& system) {
  if (IsNameOfUtf8(declaration.encoding)) {
    body.insert(0, DeclarationText(declaration));
    return system.Loads(body) ? std::optional(std::move(body)) : std::nullopt;
  }
  std::optional<std::string> bytes =
      Encoded(declaration.encoding, DeclarationText(declaration) + body, system);
  XmlDeclaration inUtf8 = declaration;
  inUtf8.encoding = kUtf8;
  body.insert(0, DeclarationText(inUtf8));
  if (bytes && system.LoadAlike(body, *bytes)) return bytes;
  return system.Loads(body) ? std::optional(std::move(body)) : std::nullopt;
}

}  // namespace carrovan
