#pragma once

#include "platform/console.h"

namespace carrovan {

class RecordingConsole : public Console {
 public:
  std::wstring out;
  std::wstring err;
  bool terminal = false;
  bool outIsWhole = true;

  void Out(std::wstring_view text) override { out += text; }
  void Err(std::wstring_view text) override { err += text; }
  bool ErrIsTerminal() const override { return terminal; }
  bool IsOutWhole() const override { return outIsWhole; }
};

}  // namespace carrovan
