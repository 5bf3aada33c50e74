#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/file_system.h"

namespace carrovan {

// The folder in which the answers of many hosts were collected, as it lies on the disk. What is in
// it comes from those hosts: no file is read beyond a limit, no link is followed, and a name leads
// to a file only if the folder lists it, so that none leads out of the folder.

inline constexpr std::uint64_t kLongestFleetFile = std::uint64_t{64} << 20;

// A file of the folder. Nothing at all when there is none.
struct FleetFile {
  bool isThere = false;
  std::string bytes;
  std::wstring problem;  // why it is not read, with its name: "output.json is a link ..."
};

struct FleetAnswerFiles {
  int number = 0;
  std::wstring problem;  // why the answer's folder is not read
  FleetFile output;
  FleetFile errors;
  FleetFile status;
  FleetFile user;
};

struct FleetHostFolder {
  std::wstring problem;  // why the host's folder is not read; what is left out of it
  FleetFile failure;
  std::vector<FleetAnswerFiles> answers;  // without what is in them, by number
};

class FleetFolder {
 public:
  // Both outlive it. Looks at the folder once.
  FleetFolder(const FileReader& files, const std::wstring& root,
              std::uint64_t longestFile = kLongestFleetFile);

  // Nothing when the folder can be read, else why not.
  const std::wstring& Problem() const { return problem_; }

  // A file beside the hosts' folders.
  FleetFile Read(const std::wstring& name) const;

  // The names of the folders in it, links to folders included.
  std::vector<std::wstring> Folders() const;

  // What is known of a host but for its answers' files. A host without a folder has nothing.
  FleetHostFolder ReadHost(const std::wstring& host) const;

  // The files of one answer, one after the other, since together they may be large.
  FleetAnswerFiles ReadAnswer(const std::wstring& host, int number) const;

 private:
  // None, with the reason, of a folder that cannot be read.
  std::vector<FolderEntry> EntriesOf(const std::wstring& folder, const std::wstring& name,
                                     std::wstring& problem) const;
  void ListAnswers(const std::wstring& folder, FleetHostFolder& host) const;
  FleetFile ReadIn(const std::wstring& folder, const std::vector<FolderEntry>& entries,
                   const std::wstring& name) const;

  const FileReader& files_;
  const std::wstring& root_;
  std::uint64_t longestFile_;
  std::vector<FolderEntry> entries_;
  std::wstring problem_;
};

// False for a name that leads elsewhere or holds what no folder's name holds.
bool CanBeHostFolder(const std::wstring& name);

// The lines of a text that should be UTF-8: without their ends and without empty ones.
std::vector<std::wstring> FleetLines(const std::string& bytes, std::size_t mostLines,
                                     std::size_t mostCharacters, std::size_t& omitted);

// A decimal number and nothing else but blanks around it.
std::optional<int> FleetNumber(const std::string& bytes);

}  // namespace carrovan
