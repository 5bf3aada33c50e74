#include "restore/journal_writer.h"

namespace carrovan {

void JournalWriter::Add(const JournalRecord& record) {
  waiting_ += EncodeRecord(record, flushed_);
  ++lines_;
}

SystemCode JournalWriter::Write() {
  if (waiting_.empty()) return kSystemOk;
  const SystemCode code = files_.AppendBytes(path_, isCutShort_ ? "\n" + waiting_ : waiting_);
  isCutShort_ = code != kSystemOk;
  if (code == kSystemOk) waiting_.clear();
  return code;
}

SystemCode JournalWriter::Flush(std::vector<std::wstring> paths) {
  if (const SystemCode code = Write(); code != kSystemOk) return code;
  if (flushed_ == lines_ && paths.empty()) return kSystemOk;
  paths.push_back(path_);
  const SystemCode code = files_.Flush(paths);
  if (code == kSystemOk) flushed_ = lines_;
  return code;
}

}  // namespace carrovan
