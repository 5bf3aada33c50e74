#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/file_system.h"
#include "restore/journal_record.h"

namespace carrovan {

// Writes a journal, which stays open from the first line that is written on. Each line says how
// many of those in front of it were safe from a loss of power when it was written, so that a reader
// can see whether one of these is missing.
class JournalWriter {
 public:
  // Goes on behind the lines that are there, of which `lines` could be read. The last one may have
  // no end.
  JournalWriter(FileSystem& files, std::wstring path, std::size_t lines)
      : files_(files), path_(std::move(path)), isCutShort_(lines > 0), lines_(lines) {}

  // Adds a line, which is written with the next Write or Flush at the latest.
  void Add(const JournalRecord& record);

  // Has the lines in the file, where they survive the end of the program.
  [[nodiscard]] SystemCode Write();

  // Has the lines where they survive a loss of power, together with what lies at further paths.
  // Does nothing when there is nothing new.
  [[nodiscard]] SystemCode Flush(const std::vector<std::wstring>& paths = {});

  // Lets go of the file, so that it can be moved or removed. A further line opens it again.
  void Close() { file_.reset(); }

 private:
  // A record whose line is long is kept as it is until then.
  struct LongLine {
    JournalRecord record;
    std::size_t flushed = 0;
  };
  using Waiting = std::variant<std::string, LongLine>;

  [[nodiscard]] SystemCode Open();
  [[nodiscard]] SystemCode Write(std::string& lines);
  [[nodiscard]] SystemCode Write(const LongLine& line);
  [[nodiscard]] SystemCode Append(std::string_view bytes);

  FileSystem& files_;
  std::wstring path_;
  std::unique_ptr<FileAppender> file_;
  std::deque<Waiting> waiting_;  // what is not in the file yet
  bool mayWriteEarly_ = true;    // no writing has failed since the last that succeeded
  bool isCutShort_;              // what is in the file may end in a part of a line
  std::size_t lines_;            // with those that are waiting
  std::size_t flushed_ = 0;      // of them, known to be safe
};

}  // namespace carrovan
