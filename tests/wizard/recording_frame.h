#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tests/support/category_checklist.h"
#include "wizard/wizard_frame.h"

namespace carrovan {

// A tree in memory that also notes what a window would show of it.
class RecordingTree : public CategoryChecklist {
 public:
  std::map<Item, std::wstring> texts;
  std::set<Item> expanded;
  Item selected = kNoItem;

  void Clear() override {
    CategoryChecklist::Clear();
    texts.clear();
    expanded.clear();
    selected = kNoItem;
  }
  Item Append(Item parent, const std::wstring& text, int itemData) override {
    const Item item = CategoryChecklist::Append(parent, text, itemData);
    texts[item] = text;
    return item;
  }
  void Expand(Item item) override { expanded.insert(item); }
  void Select(Item item) override { selected = item; }
};

// A path page that answers with what a test has put into it.
class RecordingPathPage : public PathPageView {
 public:
  std::optional<std::wstring> answer;
  std::wstring shownPath;
  std::vector<std::wstring> versions;

  std::optional<std::wstring> ChooseOpenFile(const OpenFileQuestion&) override { return answer; }
  void ShowPackagePath(const std::wstring& path) override { shownPath = path; }
  void ListVersions(const std::vector<std::wstring>& years) override { versions = years; }
  std::optional<std::wstring> SelectedVersion() const override {
    return versions.empty() ? std::nullopt : std::optional(versions.back());
  }
};

// A wizard window that answers from its fields and notes what it was shown.
class RecordingFrame : public WizardFrame {
 public:
  std::vector<WizardPage> pages;
  std::vector<WizardButtons> buttons;
  std::vector<std::wstring> messages;             // plain ones
  std::vector<std::wstring> applicationMessages;  // those in the application's style
  std::vector<std::wstring> questions;            // with Yes and No
  std::vector<ListQuestion> listQuestions;
  std::vector<SaveFileQuestion> saveQuestions;
  bool yes = true;
  bool yesToLists = false;
  std::optional<std::wstring> saveAnswer;
  std::wstring finishText;
  std::vector<std::wstring> finishTexts;  // all, the last one included
  FinishDetails details;
  std::wstring backupText;
  std::vector<std::pair<int, std::wstring>> progress;  // of all steps
  bool isProgressShown = false;
  MigrationMode shownMode = MigrationMode::kNone;
  RecordingPathPage pathPage;
  bool closeAsked = false;
  bool ended = false;
  std::map<WizardPage, std::wstring> selectedVersions;  // of pages with such a list
  std::map<WizardPage, RecordingTree> trees;

  // Called while a message or question is up, as the user can act then.
  std::function<void()> whileAsking;

  WizardPage Page() const { return pages.at(pages.size() - 1); }
  const WizardButtons& Buttons() const { return buttons.at(buttons.size() - 1); }

  void ShowPage(WizardPage page) override { pages.push_back(page); }
  void ShowButtons(const WizardButtons& shown) override { buttons.push_back(shown); }
  bool AskYesNo(const std::wstring& question) override {
    questions.push_back(question);
    Ask();
    return yes;
  }
  std::optional<std::wstring> SelectedVersion(WizardPage page) const override {
    const auto selected = selectedVersions.find(page);
    if (selected == selectedVersions.end()) return std::nullopt;
    return selected->second;
  }
  CategoryTree& Tree(WizardPage categoryPage) override { return trees[categoryPage]; }
  void EndProgram() override { ended = true; }

  void ShowMessage(const std::wstring& text) override {
    messages.push_back(text);
    Ask();
  }
  void ShowApplicationMessage(const std::wstring& text) override {
    applicationMessages.push_back(text);
    Ask();
  }
  std::optional<std::wstring> ChooseSaveFile(const SaveFileQuestion& question) override {
    saveQuestions.push_back(question);
    Ask();
    return saveAnswer;
  }
  bool AskWithList(const ListQuestion& question) override {
    listQuestions.push_back(question);
    Ask();
    return question.yes && yesToLists;
  }
  void SetFinishDetails(const FinishDetails& shown) override { details = shown; }
  void SetBackupText(const std::wstring& text) override { backupText = text; }
  void ShowProgress(int thousandths, const std::wstring& name) override {
    progress.emplace_back(thousandths, name);
    isProgressShown = true;
  }
  void HideProgress() override { isProgressShown = false; }
  void ShowMode(MigrationMode mode) override { shownMode = mode; }
  PathPageView& PathPage() override { return pathPage; }
  void SetFinishText(const std::wstring& text) override {
    finishText = text;
    finishTexts.push_back(text);
  }
  void CloseWizard() override { closeAsked = true; }

 private:
  void Ask() {
    if (whileAsking) whileAsking();
  }
};

}  // namespace carrovan
