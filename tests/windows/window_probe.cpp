// Reports as JSON what the windows of a program show: window_probe.exe carrovan.exe
// and what their system menus offer: window_probe.exe carrovan.exe menu

#include <iostream>
#include <nlohmann/json.hpp>

#include "tests/windows/window_listing.h"
#include "text/text.h"

namespace carrovan {
namespace {

using Json = nlohmann::ordered_json;

Json ToJson(const ScreenArea& area) { return {area.left, area.top, area.width, area.height}; }

Json ToJson(const std::vector<std::wstring>& texts) {
  Json list = Json::array();
  for (const std::wstring& text : texts) list.push_back(ToUtf8(text));
  return list;
}

Json ToJson(const TreeItemFacts& item) {
  return {{"text", ToUtf8(item.text)}, {"depth", item.depth},        {"checked", item.checked},
          {"expanded", item.expanded}, {"has_caret", item.hasCaret}, {"label", ToJson(item.label)},
          {"box", ToJson(item.box)}};
}

Json ToJson(const WindowFacts& window) {
  Json items = Json::array();
  for (const TreeItemFacts& item : window.items) items.push_back(ToJson(item));
  return {{"class_name", ToUtf8(window.className)},
          {"text", ToUtf8(window.text)},
          {"name", ToUtf8(window.name)},
          {"number", window.number},
          {"depth", window.depth},
          {"enabled", window.enabled},
          {"visible", window.visible},
          {"focused", window.focused},
          {"checked", window.checked},
          {"area", ToJson(window.area)},
          {"entries", ToJson(window.entries)},
          {"items", items}};
}

Json WindowsOf(const std::wstring& program) {
  Json windows = Json::array();
  for (const WindowFacts& window : ListWindows(program)) windows.push_back(ToJson(window));
  return windows;
}

}  // namespace
}  // namespace carrovan

int wmain(int argc, wchar_t** argv) {
  const bool menu = argc == 3 && std::wstring_view(argv[2]) == L"menu";
  if (argc != 2 && !menu) {
    std::cerr << "Usage: window_probe PROGRAM.exe [menu]\n";
    return 2;
  }
  const carrovan::Json answer =
      menu ? carrovan::ToJson(carrovan::ListSystemMenus(argv[1])) : carrovan::WindowsOf(argv[1]);
  std::cout << answer.dump() << '\n';
  return 0;
}
