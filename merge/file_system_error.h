#pragma once

#include <exception>
#include <string>
#include <utility>

#include "platform/system_code.h"

namespace carrovan {

// A file operation that failed and ends the run it belongs to, leaving files as they are then.
class FileSystemError : public std::exception {
 public:
  FileSystemError(SystemCode code, std::wstring path) : code_(code), path_(std::move(path)) {}

  const char* what() const noexcept override { return "a file operation failed"; }
  SystemCode Code() const { return code_; }
  const std::wstring& Path() const { return path_; }

  // One line for a person: the path and the system's reason with its number.
  std::wstring Description() const { return path_ + L": " + DescribeSystemCode(code_); }

 private:
  SystemCode code_;
  std::wstring path_;
};

}  // namespace carrovan
