#include "tests/windows/window_listing.h"

#include <windows.h>

#include <commctrl.h>
#include <tlhelp32.h>

#include <algorithm>
#include <array>
#include <bit>
#include <optional>

#include "platform/windows/handles.h"
#include "tests/windows/accessible_name.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr UINT kPatienceMilliseconds = 1000;

LRESULT Ask(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
  DWORD_PTR result = 0;
  const LRESULT answered = SendMessageTimeoutW(window, message, wParam, lParam, SMTO_ABORTIFHUNG,
                                               kPatienceMilliseconds, &result);
  return answered != 0 ? static_cast<LRESULT>(result) : 0;
}

ScreenArea AreaOf(const RECT& area) {
  return {area.left, area.top, area.right - area.left, area.bottom - area.top};
}

ScreenArea AreaOf(HWND window) {
  RECT area{};
  GetWindowRect(window, &area);
  return AreaOf(area);
}

std::wstring ClassOf(HWND window) {
  wchar_t name[64] = {};
  GetClassNameW(window, name, static_cast<int>(std::size(name)));
  return name;
}

std::wstring TextOf(HWND window) {
  const auto length = static_cast<std::size_t>(Ask(window, WM_GETTEXTLENGTH));
  std::wstring text(length + 1, L'\0');
  const LRESULT got = Ask(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
  text.resize(static_cast<std::size_t>(got));
  return text;
}

// What a kind of list understands.
struct ListMessages {
  UINT count;
  UINT textLength;
  UINT text;
};
constexpr ListMessages kComboBox{CB_GETCOUNT, CB_GETLBTEXTLEN, CB_GETLBTEXT};
constexpr ListMessages kListBox{LB_GETCOUNT, LB_GETTEXTLEN, LB_GETTEXT};

std::vector<std::wstring> EntriesOf(HWND list, const ListMessages& messages) {
  std::vector<std::wstring> entries;
  const LRESULT count = Ask(list, messages.count);
  for (LRESULT i = 0; i < count; ++i) {
    const auto entry = static_cast<WPARAM>(i);
    std::wstring text(static_cast<std::size_t>(Ask(list, messages.textLength, entry)) + 1, L'\0');
    Ask(list, messages.text, entry, reinterpret_cast<LPARAM>(text.data()));
    text.pop_back();
    entries.push_back(text);
  }
  return entries;
}

DWORD ProcessOf(HWND window) {
  DWORD processId = 0;
  GetWindowThreadProcessId(window, &processId);
  return processId;
}

// Memory of another process, where a control of that process looks for what it is asked.
class ForeignMemory {
 public:
  ForeignMemory(DWORD processId, std::size_t bytes)
      : process_(OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE |
                                 PROCESS_CREATE_THREAD | PROCESS_QUERY_INFORMATION,
                             FALSE, processId)),
        address_(
            VirtualAllocEx(process_.Get(), nullptr, bytes, MEM_COMMIT, PAGE_EXECUTE_READWRITE)) {}
  ~ForeignMemory() { VirtualFreeEx(process_.Get(), address_, 0, MEM_RELEASE); }
  ForeignMemory(const ForeignMemory&) = delete;
  ForeignMemory& operator=(const ForeignMemory&) = delete;

  template <typename Content>
  void Put(std::size_t offset, const Content& content) {
    WriteProcessMemory(process_.Get(), At(offset), &content, sizeof(content), nullptr);
  }
  void Get(std::size_t offset, void* content, std::size_t bytes) const {
    ReadProcessMemory(process_.Get(), At(offset), content, bytes, nullptr);
  }
  void* At(std::size_t offset) const { return static_cast<char*>(address_) + offset; }

  // Has the process run the code at one place on the data at another. False when that takes long.
  bool Run(std::size_t code, std::size_t data) const {
    const KernelObject thread(CreateRemoteThread(process_.Get(), nullptr, 0,
                                                 std::bit_cast<LPTHREAD_START_ROUTINE>(At(code)),
                                                 At(data), 0, nullptr));
    return WaitForSingleObject(thread.Get(), kPatienceMilliseconds) == WAIT_OBJECT_0;
  }

 private:
  KernelObject process_;
  void* address_;
};

// Reads the items of a tree of another process.
class ForeignTree {
 public:
  explicit ForeignTree(HWND tree) : tree_(tree), memory_(ProcessOf(tree), kBytes) {}

  std::vector<TreeItemFacts> Items() {
    std::vector<TreeItemFacts> items;
    Add(Ask(tree_, TVM_GETNEXTITEM, TVGN_ROOT), 0, items);
    return items;
  }

 private:
  static constexpr std::size_t kTextOffset = 1024;
  static constexpr std::size_t kTextLength = 512;
  static constexpr std::size_t kBytes = kTextOffset + kTextLength * sizeof(wchar_t);

  void Add(LRESULT item, int depth, std::vector<TreeItemFacts>& items) {
    for (; item != 0; item = Ask(tree_, TVM_GETNEXTITEM, TVGN_NEXT, item)) {
      items.push_back(Facts(item, depth));
      Add(Ask(tree_, TVM_GETNEXTITEM, TVGN_CHILD, item), depth + 1, items);
    }
  }

  TreeItemFacts Facts(LRESULT item, int depth) {
    const auto state = static_cast<UINT>(Ask(tree_, TVM_GETITEMSTATE, static_cast<WPARAM>(item),
                                             TVIS_STATEIMAGEMASK | TVIS_EXPANDED));
    TreeItemFacts facts;
    facts.text = ItemText(item);
    facts.depth = depth;
    facts.checked = (state & TVIS_STATEIMAGEMASK) == INDEXTOSTATEIMAGEMASK(2U);
    facts.expanded = (state & TVIS_EXPANDED) != 0;
    facts.hasCaret = Ask(tree_, TVM_GETNEXTITEM, TVGN_CARET) == item;
    if (const auto label = LabelArea(item)) {
      facts.label = OnScreen(*label);
      facts.box = OnScreen(BoxArea(*label));
    }
    return facts;
  }

  std::wstring ItemText(LRESULT item) {
    TVITEMW question{};
    question.mask = TVIF_TEXT;
    question.hItem = std::bit_cast<HTREEITEM>(item);
    question.pszText = static_cast<wchar_t*>(memory_.At(kTextOffset));
    question.cchTextMax = static_cast<int>(kTextLength);
    memory_.Put(0, question);
    Ask(tree_, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(memory_.At(0)));
    std::wstring text(kTextLength, L'\0');
    memory_.Get(kTextOffset, text.data(), text.size() * sizeof(wchar_t));
    return text.substr(0, text.find(L'\0'));
  }

  std::optional<RECT> LabelArea(LRESULT item) {
    memory_.Put(0, item);
    if (Ask(tree_, TVM_GETITEMRECT, TRUE, reinterpret_cast<LPARAM>(memory_.At(0))) == 0) {
      return std::nullopt;
    }
    RECT area{};
    memory_.Get(0, &area, sizeof(area));
    return area;
  }

  // The box lies left of the label, with the picture between them. Where it begins and ends the
  // tree says only by what is hit at a point.
  RECT BoxArea(const RECT& label) {
    const LONG middle = (label.top + label.bottom) / 2;
    RECT box{0, label.top, 0, label.bottom};
    for (LONG x = label.left; x > 0; --x) {
      if (IsOnBox({x, middle})) {
        box.right = std::max(box.right, x + 1);
        box.left = x;
      } else if (box.right != 0) {
        break;
      }
    }
    return box;
  }

  bool IsOnBox(POINT point) {
    TVHITTESTINFO test{};
    test.pt = point;
    memory_.Put(0, test);
    Ask(tree_, TVM_HITTEST, 0, reinterpret_cast<LPARAM>(memory_.At(0)));
    memory_.Get(0, &test, sizeof(test));
    return (test.flags & TVHT_ONITEMSTATEICON) != 0;
  }

  ScreenArea OnScreen(RECT area) const {
    MapWindowPoints(tree_, nullptr, reinterpret_cast<POINT*>(&area), 2);
    return AreaOf(area);
  }

  HWND tree_;
  ForeignMemory memory_;
};

// What is asked about a system menu, and the answer. A menu tells its texts to its own process
// only.
struct MenuQuestion {
  decltype(&GetSystemMenu) systemMenu;
  decltype(&GetMenuStringW) menuText;
  HWND window;
  wchar_t texts[16][128];
};

// This code is copied into the other process, so that it calls nothing but what it is given.
DWORD WINAPI AnswerInOwnProcess(void* data) {
  auto& question = *static_cast<MenuQuestion*>(data);
  const HMENU menu = question.systemMenu(question.window, FALSE);
  UINT item = 0;
  for (auto& text : question.texts) {
    question.menuText(menu, item++, text, static_cast<int>(std::size(text)), MF_BYPOSITION);
  }
  return 0;
}

HWND FocusOf(HWND window) {
  GUITHREADINFO thread{};
  thread.cbSize = sizeof(thread);
  GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &thread);
  return thread.hwndFocus;
}

WindowFacts FactsOf(HWND window, int depth) {
  WindowFacts facts;
  facts.className = ClassOf(window);
  facts.text = TextOf(window);
  facts.number = depth == 0 ? 0 : GetDlgCtrlID(window);
  facts.depth = depth;
  facts.enabled = IsWindowEnabled(window) != FALSE;
  facts.visible = IsWindowVisible(window) != FALSE;
  // The pages that are not shown have many controls, and each answer takes its time.
  if (depth > 0 && facts.visible) facts.name = AccessibleName(window);
  facts.focused = FocusOf(window) == window;
  facts.area = AreaOf(window);
  if (facts.className == L"Button") facts.checked = Ask(window, BM_GETCHECK) == BST_CHECKED;
  if (facts.className == L"ComboBox") facts.entries = EntriesOf(window, kComboBox);
  if (facts.className == L"ListBox") facts.entries = EntriesOf(window, kListBox);
  if (facts.className == L"SysTreeView32") facts.items = ForeignTree(window).Items();
  return facts;
}

void AddWithControls(HWND window, int depth, std::vector<WindowFacts>& facts) {
  facts.push_back(FactsOf(window, depth));
  for (HWND child = GetWindow(window, GW_CHILD); child != nullptr;
       child = GetWindow(child, GW_HWNDNEXT)) {
    AddWithControls(child, depth + 1, facts);
  }
}

std::vector<DWORD> ProcessesOf(const std::wstring& executableName) {
  std::vector<DWORD> ids;
  const FileHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  PROCESSENTRY32W process{};
  process.dwSize = sizeof(process);
  BOOL found = Process32FirstW(snapshot.Get(), &process);
  for (; found != FALSE; found = Process32NextW(snapshot.Get(), &process)) {
    if (EqualsIgnoringAsciiCase(process.szExeFile, executableName)) {
      ids.push_back(process.th32ProcessID);
    }
  }
  return ids;
}

BOOL CALLBACK CollectWindow(HWND window, LPARAM windows) {
  if (IsWindowVisible(window) != FALSE) {
    std::bit_cast<std::vector<HWND>*>(windows)->push_back(window);
  }
  return TRUE;
}

std::vector<HWND> VisibleWindowsOf(const std::wstring& executableName) {
  const std::vector<DWORD> ids = ProcessesOf(executableName);
  std::vector<HWND> windows;
  EnumWindows(&CollectWindow, reinterpret_cast<LPARAM>(&windows));
  std::erase_if(windows, [&ids](HWND window) {
    return std::ranges::find(ids, ProcessOf(window)) == ids.end();
  });
  return windows;
}

}  // namespace

std::vector<WindowFacts> ListWindows(const std::wstring& executableName) {
  std::vector<WindowFacts> facts;
  for (const HWND window : VisibleWindowsOf(executableName)) AddWithControls(window, 0, facts);
  return facts;
}

std::vector<std::wstring> ListSystemMenus(const std::wstring& executableName) {
  constexpr std::size_t kCodeBytes = 1024;
  std::vector<std::wstring> texts;
  for (const HWND window : VisibleWindowsOf(executableName)) {
    MenuQuestion question{&GetSystemMenu, &GetMenuStringW, window, {}};
    ForeignMemory memory(ProcessOf(window), kCodeBytes + sizeof(question));
    memory.Put(0, *std::bit_cast<const std::array<char, kCodeBytes>*>(&AnswerInOwnProcess));
    memory.Put(kCodeBytes, question);
    if (!memory.Run(0, kCodeBytes)) continue;
    memory.Get(kCodeBytes, &question, sizeof(question));
    for (const wchar_t* text : question.texts) {
      if (*text != L'\0') texts.emplace_back(text);
    }
  }
  return texts;
}

}  // namespace carrovan
