#include "pages/select_path.h"

#include "pages/version_list.h"
#include "platform/windows/file_questions.h"
#include "resources/resource.h"

namespace carrovan {
namespace {

constexpr ControlLook kLooks[] = {
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

std::span<const ControlLook> CSelectPath::Looks() const { return kLooks; }

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
