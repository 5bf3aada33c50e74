#include "cli/verbs.h"

#include "text/text.h"

namespace carrovan {

CLI::Option* AddText(CLI::App& app, const std::string& name, std::wstring& target,
                     const std::string& description) {
  return app.add_option_function<std::string>(
      name, [&target](const std::string& value) { target = FromUtf8(value); }, description);
}

CLI::Option* AddTexts(CLI::App& app, const std::string& name, std::vector<std::wstring>& targets,
                      const std::string& description) {
  return app
      .add_option_function<std::vector<std::string>>(
          name,
          [&targets](const std::vector<std::string>& values) {
            for (const std::string& value : values) targets.push_back(FromUtf8(value));
          },
          description)
      ->expected(1)
      ->take_all();
}

CLI::Option* AddLabels(CLI::App& app, CategoryChoice& choice, const std::string& description) {
  return app
      .add_option_function<std::vector<std::string>>(
          "--category",
          [&choice](const std::vector<std::string>& labels) {
            for (const std::string& label : labels) choice.labels.push_back(FromUtf8(label));
          },
          description)
      ->type_name("LABEL");
}

void AddCategories(CLI::App& verb, CategoryChoice& choice, const std::string& allDescription) {
  auto* what = verb.add_option_group("what", "Which categories (one of these)");
  what->add_flag("--all", choice.all, allDescription);
  AddLabels(*what, choice, "Categories by label, such as Options \"Shortcut key\"");
  what->require_option(1);
}

void AddJson(CLI::App& verb, bool& json) {
  verb.add_flag("--json", json, "Print the same as JSON, for programs");
}

}  // namespace carrovan
