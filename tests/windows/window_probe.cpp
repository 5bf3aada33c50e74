// Reports as JSON what the windows of a program show: window_probe.exe carrovan.exe

#include <iostream>
#include <nlohmann/json.hpp>

#include "tests/windows/window_listing.h"
#include "text/text.h"

namespace carrovan {
namespace {

using Json = nlohmann::ordered_json;

Json ToJson(const ScreenArea& area) { return {area.left, area.top, area.width, area.height}; }

Json ToJson(const TreeItemFacts& item) {
  return {{"text", ToUtf8(item.text)}, {"depth", item.depth},        {"checked", item.checked},
          {"expanded", item.expanded}, {"has_caret", item.hasCaret}, {"label", ToJson(item.label)},
          {"box", ToJson(item.box)}};
}

Json ToJson(const WindowFacts& window) {
  Json entries = Json::array();
  for (const std::wstring& entry : window.entries) entries.push_back(ToUtf8(entry));
  Json items = Json::array();
  for (const TreeItemFacts& item : window.items) items.push_back(ToJson(item));
  return {{"class_name", ToUtf8(window.className)},
          {"text", ToUtf8(window.text)},
          {"number", window.number},
          {"depth", window.depth},
          {"enabled", window.enabled},
          {"visible", window.visible},
          {"focused", window.focused},
          {"checked", window.checked},
          {"area", ToJson(window.area)},
          {"entries", entries},
          {"items", items}};
}

}  // namespace
}  // namespace carrovan

int wmain(int argc, wchar_t** argv) {
  if (argc != 2) {
    std::cerr << "Usage: window_probe PROGRAM.exe\n";
    return 2;
  }
  carrovan::Json windows = carrovan::Json::array();
  for (const carrovan::WindowFacts& window : carrovan::ListWindows(argv[1])) {
    windows.push_back(carrovan::ToJson(window));
  }
  std::cout << windows.dump() << '\n';
  return 0;
}
