#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace carrovan {

// Progress reported as whole lines. Each line has reached the outside when WriteLine returns; a
// failure to write is nobody's concern.
class LineLog {
 public:
  virtual ~LineLog() = default;

  // Adds the line end. A line may itself begin with a line break.
  virtual void WriteLine(std::wstring_view line) = 0;
};

// Standard output and standard error of the command line. Text reaches a file or a pipe as UTF-8
// whatever the locale, and a terminal in the way that it shows.
class Console {
 public:
  virtual ~Console() = default;

  virtual void Out(std::wstring_view text) = 0;
  virtual void Err(std::wstring_view text) = 0;
  virtual bool ErrIsTerminal() const = 0;

  // False once a text did not reach standard output whole: a full disk, a reader that has gone.
  virtual bool IsOutWhole() const = 0;
};

// The console of this process.
std::unique_ptr<Console> OpenConsole();

}  // namespace carrovan
