#include "restore/journal_writer.h"

namespace carrovan {

namespace {

// Of values, in one record.
constexpr std::size_t kLongValues = std::size_t{1} << 18;

// Of lines that wait, and of a long one that is written.
constexpr std::size_t kMostBytes = std::size_t{1} << 20;

}  // namespace

void JournalWriter::Add(const JournalRecord& record) {
  ++lines_;
  if (ValueBytes(record) > kLongValues) {
    waiting_.emplace_back(LongLine{record, flushed_});
  } else {
    if (waiting_.empty() || !std::holds_alternative<std::string>(waiting_.back())) {
      waiting_.emplace_back(std::string());
    }
    std::string& lines = std::get<std::string>(waiting_.back());
    lines += EncodeRecord(record, flushed_);
    if (lines.size() < kMostBytes) return;
  }
  // What fails now is tried again, and reported, when the lines must be there.
  if (mayWriteEarly_) static_cast<void>(Write());
}

SystemCode JournalWriter::Open() { return file_ ? kSystemOk : files_.OpenToAppend(path_, file_); }

SystemCode JournalWriter::Write() {
  while (!waiting_.empty()) {
    const SystemCode code =
        std::visit([this](auto& lines) { return Write(lines); }, waiting_.front());
    mayWriteEarly_ = code == kSystemOk;
    if (code != kSystemOk) return code;
    waiting_.pop_front();
  }
  return kSystemOk;
}

SystemCode JournalWriter::Write(std::string& lines) {
  if (isCutShort_ && !lines.starts_with('\n')) lines.insert(0, 1, '\n');
  return Append(lines);
}

SystemCode JournalWriter::Write(const LongLine& line) {
  std::string part = isCutShort_ ? "\n" : "";
  SystemCode code = kSystemOk;
  EncodeRecord(line.record, line.flushed, [&](std::string_view text) {
    part.append(text);
    if (code != kSystemOk || part.size() < kMostBytes) return;
    code = Append(part);
    part.clear();
  });
  if (code == kSystemOk) code = Append(part);
  return code;
}

SystemCode JournalWriter::Append(std::string_view bytes) {
  SystemCode code = Open();
  if (code == kSystemOk) code = file_->Append(bytes);
  isCutShort_ = code != kSystemOk;
  return code;
}

SystemCode JournalWriter::Flush(const std::vector<std::wstring>& paths) {
  SystemCode code = Write();
  if (code == kSystemOk && !paths.empty()) code = files_.Flush(paths);
  if (code != kSystemOk || flushed_ == lines_) return code;
  code = Open();
  if (code == kSystemOk) code = file_->FlushToDisk();
  if (code == kSystemOk) flushed_ = lines_;
  return code;
}

}  // namespace carrovan
