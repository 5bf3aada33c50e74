#pragma once

#include <string>

namespace carrovan {

// Initialization files ("config.ini") with the system's profile semantics: section and key names
// compare without regard to case, blanks around names and values are cut.
class ProfileReader {
 public:
  virtual ~ProfileReader() = default;

  // The value of a key, at most 255 characters; one pair of quotes around it is cut. Empty when the
  // file, the section or the key is missing.
  virtual std::wstring ReadValue(const std::wstring& section, const std::wstring& key,
                                 const std::wstring& filePath) const = 0;
};

class ProfileFile : public ProfileReader {
 public:
  // Sets a key, appending the section and the key when they are new and creating the file when it
  // is missing. A file that begins with FF FE stays UTF-16; any other is 8-bit text in the system's
  // code page. False when the file cannot be written.
  virtual bool WriteValue(const std::wstring& section, const std::wstring& key,
                          const std::wstring& value, const std::wstring& filePath) = 0;
};

}  // namespace carrovan
