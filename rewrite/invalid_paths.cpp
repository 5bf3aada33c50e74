#include "rewrite/invalid_paths.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/path_text.h"
#include "platform/text.h"

namespace carrovan {
namespace {

// Text in the form of its file. The characters looked at here are one unit in every form, and no
// other character holds one of their bytes.
class RawText {
 public:
  RawText(std::string_view bytes, std::size_t unitBytes) : bytes_(bytes), unitBytes_(unitBytes) {}

  std::string_view Bytes() const { return bytes_; }
  std::size_t Size() const { return bytes_.size() / unitBytes_; }

  char16_t operator[](std::size_t index) const {
    const auto byte = [this](std::size_t at) { return static_cast<unsigned char>(bytes_[at]); };
    if (unitBytes_ == 1) return byte(index);
    return static_cast<char16_t>(byte(2 * index) | (byte(2 * index + 1) << 8));
  }

  RawText Part(std::size_t from, std::size_t to) const {
    return {bytes_.substr(from * unitBytes_, (to - from) * unitBytes_), unitBytes_};
  }

  RawText Trimmed() const {
    std::size_t from = 0;
    std::size_t to = Size();
    while (from < to && IsBlank((*this)[from])) ++from;
    while (from < to && IsBlank((*this)[to - 1])) --to;
    return Part(from, to);
  }

  std::optional<RawText> Behind(char16_t mark) const {
    for (std::size_t i = 0; i < Size(); ++i) {
      if ((*this)[i] == mark) return Part(i + 1, Size());
    }
    return std::nullopt;
  }

 private:
  static bool IsBlank(char16_t c) { return c == u' ' || (c >= u'\t' && c <= u'\r'); }

  std::string_view bytes_;
  std::size_t unitBytes_;
};

// Gives the lines of a file's text one after the other, trimmed.
class LineReader {
 public:
  LineReader(std::string_view body, std::size_t unitBytes)
      : size_(body.size()), body_(body), unitBytes_(unitBytes) {}

  std::optional<RawText> Next() {
    if (body_.empty()) return std::nullopt;
    return RawText(TakeWholeLines(body_, 0, unitBytes_), unitBytes_).Trimmed();
  }

  // Behind the line given last.
  std::size_t Position() const { return size_ - body_.size(); }

 private:
  std::size_t size_;
  std::string_view body_;
  std::size_t unitBytes_;
};

// What stands between the quotes of a line's string value; nothing for a line of another kind.
std::optional<RawText> QuotedValue(const RawText& line) {
  const std::size_t size = line.Size();
  if (size < 3 || line[0] == u'[' || line[size - 1] != u'"') return std::nullopt;
  const std::optional<RawText> behind = line.Behind(u'=');
  if (!behind) return std::nullopt;
  const RawText value = behind->Trimmed();
  if (value.Size() < 2 || value[0] != u'"') return std::nullopt;
  return value.Part(1, value.Size() - 1);
}

bool IsAbsolutePath(std::u16string_view text) {
  if (text.size() < 3) return false;
  const bool onDrive = text[1] == u':' && (text[2] == u'\\' || text[2] == u'/');
  return onDrive || text.starts_with(u"\\\\");
}

// Asks for each distinct path once, and for nothing in a folder that is not there.
class PathChecker {
 public:
  explicit PathChecker(const FileReader& files) : files_(files) {}

  // `bytes` is the path as it stands in the file, `text` what they stand for, with its escaping.
  bool Exists(std::string_view bytes, std::u16string_view text) {
    const auto [known, isNew] = paths_.try_emplace(bytes, false);
    if (isNew) {
      const std::wstring path = ReplaceAll(FromUtf16(text), L"\\\\", L"\\");
      known->second = FolderMayHold(path) && files_.Exists(path);
    }
    return known->second;
  }

 private:
  bool FolderMayHold(std::wstring path) {
    // Steps back may lead out of a folder that is not there.
    if (path.find(L"..") != std::wstring::npos) return true;
    std::ranges::replace(path, L'/', L'\\');
    std::wstring folder = RemoveFileSpec(path);
    const bool isRoot = RemoveFileSpec(folder) == folder;
    if (isRoot) return true;
    const auto [known, isNew] = folders_.try_emplace(std::move(folder), false);
    if (isNew) known->second = files_.Exists(known->first);
    return known->second;
  }

  const FileReader& files_;
  std::unordered_map<std::string_view, bool> paths_;  // by their bytes in the file
  std::unordered_map<std::wstring, bool> folders_;
};

// Whether the line's value is an absolute path that does not exist. `text` is storage for it.
bool IsInvalid(const RawText& line, const TextForm& form, PathChecker& checker,
               std::u16string& text) {
  const std::optional<RawText> value = QuotedValue(line);
  if (!value) return false;
  form.Decode(value->Bytes(), text);
  return IsAbsolutePath(text) && !checker.Exists(value->Bytes(), text);
}

struct Verdict {
  std::vector<std::size_t> invalidLines;  // numbers, in order
  std::size_t keptBytes = 0;              // of the other lines, trimmed and with CR LF
  bool fitsInPlace = true;                // no line moves back over one that is still to be read
};

Verdict Judge(std::string_view body, const TextForm& form, const FileReader& files,
              const TellDroppedLine& tell) {
  Verdict verdict;
  PathChecker checker(files);
  std::string_view keyLine;
  std::u16string text;
  LineReader lines(body, form.UnitBytes());
  for (std::size_t number = 0; const auto line = lines.Next(); ++number) {
    if (IsInvalid(*line, form, checker, text)) {
      verdict.invalidLines.push_back(number);
      if (tell) tell(form.Decode(keyLine), form.Decode(line->Bytes()));
    } else {
      if (line->Size() > 0 && (*line)[0] == u'[') keyLine = line->Bytes();
      verdict.keptBytes += line->Bytes().size() + 2 * form.UnitBytes();
      verdict.fitsInPlace = verdict.fitsInPlace && verdict.keptBytes <= lines.Position();
    }
  }
  return verdict;
}

// Writes the lines that stay; the target may be the place that they are read from when they fit.
void CopyKept(std::string_view body, const TextForm& form, const Verdict& verdict, char* target) {
  const std::string lineEnd = form.Encode(u"\r\n");
  LineReader lines(body, form.UnitBytes());
  auto nextInvalid = verdict.invalidLines.begin();
  for (std::size_t number = 0; const auto line = lines.Next(); ++number) {
    if (nextInvalid != verdict.invalidLines.end() && *nextInvalid == number) {
      ++nextInvalid;
      continue;
    }
    const std::string_view bytes = line->Bytes();
    std::memmove(target, bytes.data(), bytes.size());
    lineEnd.copy(target + bytes.size(), lineEnd.size());
    target += bytes.size() + lineEnd.size();
  }
}

}  // namespace

std::size_t DropInvalidPaths(std::string& fileBytes, const TextForm& form, const FileReader& files,
                             const TellDroppedLine& tell) {
  const std::string_view body = form.Body(fileBytes);
  const Verdict verdict = Judge(body, form, files, tell);
  if (verdict.invalidLines.empty()) return 0;
  const std::size_t begin = form.Mark(fileBytes).size();
  const std::string rest(form.Rest(fileBytes));
  if (verdict.fitsInPlace) {
    CopyKept(body, form, verdict, fileBytes.data() + begin);
    fileBytes.resize(begin + verdict.keptBytes);
  } else {
    std::string kept(form.Mark(fileBytes));
    kept.resize(begin + verdict.keptBytes);
    CopyKept(body, form, verdict, kept.data() + begin);
    fileBytes.swap(kept);
  }
  fileBytes += rest;
  return verdict.invalidLines.size();
}

}  // namespace carrovan
