#include "pages/select_version.h"

#include "environment/wizard_state.h"
#include "pages/version_list.h"
#include "resources/resource.h"

namespace carrovan {
namespace {

constexpr ControlLook kLooks[] = {
    {IDC_VERSION_TITLE, PageFont::kTitle, ControlBackground::kTransparent},
    {IDC_VERSION_LIST, PageFont::kHeading, ControlBackground::kTransparent},
    {IDC_VERSION_LABEL, PageFont::kHeading, ControlBackground::kTransparent},
};

}  // namespace

std::optional<std::wstring> CSelectVersion::SelectedVersion() const {
  return SelectedYear(Control(IDC_VERSION_LIST));
}

int CSelectVersion::TemplateNumber() const { return IDD_VERSION; }

std::span<const ControlLook> CSelectVersion::Looks() const { return kLooks; }

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

}  // namespace carrovan
