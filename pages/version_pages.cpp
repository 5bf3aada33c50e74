#include "pages/version_pages.h"

#include "environment/wizard_state.h"
#include "pages/questions.h"
#include "resources/resource.h"

namespace carrovan {

void FillVersionList(HWND list, const std::vector<std::wstring>& years) {
  SendMessageW(list, CB_RESETCONTENT, 0, 0);
  for (const std::wstring& year : years) {
    SendMessageW(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(year.c_str()));
  }
  SendMessageW(list, CB_SETCURSEL, years.size() - 1, 0);
}

std::optional<std::wstring> SelectedYear(HWND list) {
  const LRESULT selected = SendMessageW(list, CB_GETCURSEL, 0, 0);
  if (selected == CB_ERR) return std::nullopt;
  const auto entry = static_cast<WPARAM>(selected);
  const LRESULT length = SendMessageW(list, CB_GETLBTEXTLEN, entry, 0);
  if (length == CB_ERR) return std::nullopt;
  std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
  SendMessageW(list, CB_GETLBTEXT, entry, reinterpret_cast<LPARAM>(text.data()));
  text.resize(static_cast<std::size_t>(length));
  return text;
}

namespace {

constexpr ControlLook kVersionLooks[] = {
    {IDC_VERSION_TITLE, PageFont::kTitle, ControlBackground::kTransparent},
    {IDC_VERSION_LIST, PageFont::kHeading, ControlBackground::kTransparent},
    {IDC_VERSION_LABEL, PageFont::kHeading, ControlBackground::kTransparent},
};

}  // namespace

std::optional<std::wstring> CSelectVersion::SelectedVersion() const {
  return SelectedYear(Control(IDC_VERSION_LIST));
}

int CSelectVersion::TemplateNumber() const { return IDD_VERSION; }

std::span<const ControlLook> CSelectVersion::Looks() const { return kVersionLooks; }

void CSelectVersion::FillControls() {
  SetText(IDC_VERSION_TITLE, StringId::kSelectExportedVersion);
  SetText(IDC_VERSION_LABEL, StringId::kSelectVersion);
  FillVersionList(Control(IDC_VERSION_LIST), ListInstalledYears(context_));
}

bool CSelectVersion::OnCommand(int control, int notification) {
  if (control != IDC_VERSION_LIST || notification != CBN_SELCHANGE) return false;
  if (const auto year = SelectedVersion()) SelectVersion(context_, *year);
  return true;
}

namespace {

constexpr ControlLook kPathLooks[] = {
    {IDC_PATH_TITLE, PageFont::kTitle, ControlBackground::kTransparent},
    {IDC_PATH_SELECT, PageFont::kText, ControlBackground::kTransparent},
    {IDC_PATH_FILE_LABEL, PageFont::kText, ControlBackground::kTransparent},
    {IDC_PATH_VERSION_LABEL, PageFont::kText, ControlBackground::kTransparent},
    {IDC_PATH_FILE, PageFont::kText, ControlBackground::kUsual},
    {IDC_PATH_VERSIONS, PageFont::kText, ControlBackground::kUsual},
};

}  // namespace

std::optional<std::wstring> CSelectPath::ChooseOpenFile(const OpenFileQuestion& question) {
  return AskForOpenFile(Window(), question);
}

void CSelectPath::ShowPackagePath(const std::wstring& path) { SetText(IDC_PATH_FILE, path); }

void CSelectPath::ListVersions(const std::vector<std::wstring>& versions) {
  FillVersionList(Control(IDC_PATH_VERSIONS), versions);
}

std::optional<std::wstring> CSelectPath::SelectedVersion() const {
  return SelectedYear(Control(IDC_PATH_VERSIONS));
}

int CSelectPath::TemplateNumber() const { return IDD_PATH; }

std::span<const ControlLook> CSelectPath::Looks() const { return kPathLooks; }

bool CSelectPath::OnCommand(int control, int notification) {
  if (control == IDC_PATH_SELECT && notification == BN_CLICKED) {
    selectFile_(*this);
    return true;
  }
  if (control == IDC_PATH_VERSIONS && notification == CBN_SELCHANGE) {
    if (const auto year = SelectedVersion()) SelectTargetVersion(state_, context_, *year);
    return true;
  }
  return false;
}

}  // namespace carrovan
