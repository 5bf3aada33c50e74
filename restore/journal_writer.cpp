#include "restore/journal_writer.h"

namespace carrovan {

void JournalWriter::Add(const JournalRecord& record) {
  waiting_ += EncodeRecord(record, flushed_);
  ++lines_;
}

SystemCode JournalWriter::Open() { return file_ ? kSystemOk : files_.OpenToAppend(path_, file_); }

SystemCode JournalWriter::Write() {
  if (waiting_.empty()) return kSystemOk;
  SystemCode code = Open();
  if (code == kSystemOk) code = file_->Append(isCutShort_ ? "\n" + waiting_ : waiting_);
  isCutShort_ = code != kSystemOk;
  if (code == kSystemOk) waiting_.clear();
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
