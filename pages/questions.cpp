#include "pages/questions.h"

#include <shobjidl.h>
#include <utility>
#include <vector>

#include "platform/windows/com_handles.h"

namespace carrovan {
namespace {

struct Wishes {
  std::wstring extension;  // with its dot
  std::wstring filter;
  bool askBeforeOverwriting;
};

std::vector<std::wstring> SplitAtBars(const std::wstring& filter) {
  std::vector<std::wstring> parts;
  std::size_t start = 0;
  for (std::size_t bar = filter.find(L'|'); bar != std::wstring::npos;
       bar = filter.find(L'|', start)) {
    if (bar > start) parts.push_back(filter.substr(start, bar - start));
    start = bar + 1;
  }
  return parts;
}

void SetFileTypes(IFileDialog& dialog, const std::wstring& filter) {
  const std::vector<std::wstring> parts = SplitAtBars(filter);
  std::vector<COMDLG_FILTERSPEC> types;
  for (std::size_t i = 0; i + 1 < parts.size(); i += 2) {
    types.push_back({parts[i].c_str(), parts[i + 1].c_str()});
  }
  if (!types.empty()) dialog.SetFileTypes(static_cast<UINT>(types.size()), types.data());
}

void Prepare(IFileDialog& dialog, const Wishes& wishes) {
  FILEOPENDIALOGOPTIONS options = 0;
  dialog.GetOptions(&options);
  options |= FOS_FORCEFILESYSTEM | FOS_NOCHANGEDIR;
  if (wishes.askBeforeOverwriting) options |= FOS_OVERWRITEPROMPT;
  dialog.SetOptions(options);
  SetFileTypes(dialog, wishes.filter);
  if (wishes.extension.starts_with(L'.')) {
    dialog.SetDefaultExtension(wishes.extension.c_str() + 1);
  }
}

std::optional<std::wstring> ChosenPath(IFileDialog& dialog) {
  ComPointer<IShellItem> item;
  if (FAILED(dialog.GetResult(item.Receive()))) return std::nullopt;
  wchar_t* text = nullptr;
  if (FAILED(item.Get()->GetDisplayName(SIGDN_FILESYSPATH, &text))) return std::nullopt;
  std::wstring path = text;
  CoTaskMemFree(text);
  return path;
}

std::optional<std::wstring> Ask(HWND owner, const CLSID& kind, const Wishes& wishes) {
  const ComApartment apartment;
  ComPointer<IFileDialog> dialog;
  const HRESULT made = CoCreateInstance(kind, nullptr, CLSCTX_INPROC_SERVER, IID_IFileDialog,
                                        reinterpret_cast<void**>(dialog.Receive()));
  if (FAILED(made)) return std::nullopt;
  Prepare(*dialog.Get(), wishes);
  if (FAILED(dialog.Get()->Show(owner))) return std::nullopt;
  return ChosenPath(*dialog.Get());
}

}  // namespace

std::optional<std::wstring> AskForSaveFile(HWND owner, const SaveFileQuestion& question) {
  return Ask(owner, CLSID_FileSaveDialog,
             {question.defaultExtension, question.filter, question.askBeforeOverwriting});
}

std::optional<std::wstring> AskForOpenFile(HWND owner, const OpenFileQuestion& question) {
  return Ask(owner, CLSID_FileOpenDialog,
             {question.defaultExtension, question.filter, question.askBeforeOverwriting});
}

}  // namespace carrovan
