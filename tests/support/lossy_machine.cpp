#include "tests/support/lossy_machine.h"

#include <algorithm>
#include <utility>

#include "platform/registry_file.h"
#include "registry_text/registry_file_writer.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

std::vector<std::wstring> Components(const std::wstring& path) {
  std::vector<std::wstring> components;
  std::wstring name;
  for (const wchar_t c : path + L"\\") {
    if (c != L'\\' && c != L'/') {
      name.push_back(c);
    } else if (!name.empty()) {
      components.push_back(std::exchange(name, {}));
    }
  }
  return components;
}

std::size_t Below(std::mt19937& random, std::size_t bound) { return random() % bound; }

// How much of what is not safe is left: next to nothing, next to everything, or some of it.
unsigned AnyShare(std::mt19937& random) {
  constexpr unsigned kPercent[] = {0, 5, 50, 95, 100};
  return kPercent[Below(random, std::size(kPercent))];
}

// Of a content that was being written each block is there or not, and the length is any.
std::string Torn(std::mt19937& random, const std::string& safe, const std::string& written,
                 unsigned share) {
  constexpr std::size_t kBlock = 16;
  if (share == 100) return written;
  if (share == 0) return safe;
  std::string torn = written;
  for (std::size_t at = 0; at < torn.size(); at += kBlock) {
    if (Below(random, 100) < share) continue;
    for (std::size_t i = at; i < std::min(at + kBlock, torn.size()); ++i) {
      torn[i] = i < safe.size() ? safe[i] : '\0';
    }
  }
  const std::size_t shortest = std::min(safe.size(), written.size());
  const std::size_t longest = std::max(safe.size(), written.size());
  torn.resize(Below(random, 2) == 0 ? written.size()
                                    : shortest + Below(random, longest - shortest + 1));
  return torn;
}

}  // namespace

LossyFiles::LossyFiles(const MemoryFiles& start, Power& power) : power_(power) {
  NewNode(true);
  Take(start, L"", 0);
}

void LossyFiles::Take(const MemoryFiles& start, const std::wstring& path, std::size_t node) {
  for (const std::wstring& name : start.Names(path)) {
    const std::wstring inside = path.empty() ? name : path + L"\\" + name;
    const std::size_t made = NewNode(start.IsFolder(inside));
    nodes_[made].isReadOnly = start.IsReadOnly(inside);
    nodes_[node].names[FoldedName(name)] = {name, made};
    if (start.IsFolder(inside)) {
      Take(start, inside, made);
    } else {
      nodes_[made].bytes = nodes_[made].safeBytes = start.Bytes(inside);
    }
  }
  nodes_[node].safeNames = nodes_[node].names;
}

void LossyFiles::Lose(std::mt19937& random, MemoryFiles& left) const {
  std::vector<Node> nodes = nodes_;
  const unsigned names = AnyShare(random);
  for (const NameOperation& operation : waiting_) {
    if (Below(random, 100) < names) MakeSafe(nodes, operation);
  }
  const unsigned content = AnyShare(random);
  for (Node& node : nodes) {
    if (node.bytes == node.safeBytes) continue;
    node.safeBytes = Torn(random, node.safeBytes, node.bytes, content);
  }
  left = MemoryFiles();
  Give(nodes, 0, L"", left);
}

void LossyFiles::Keep(MemoryFiles& left) const {
  std::vector<Node> nodes = nodes_;
  for (Node& node : nodes) {
    node.safeNames = node.names;
    node.safeBytes = node.bytes;
  }
  left = MemoryFiles();
  Give(nodes, 0, L"", left);
}

void LossyFiles::Give(const std::vector<Node>& nodes, std::size_t node, const std::wstring& path,
                      MemoryFiles& left) {
  for (const auto& [folded, name] : nodes[node].safeNames) {
    const std::wstring inside = path.empty() ? name.spelled : path + L"\\" + name.spelled;
    const Node& at = nodes[name.node];
    if (at.isFolder) {
      left.PutFolder(inside);
      Give(nodes, name.node, inside, left);
    } else {
      left.Put(inside, at.safeBytes);
      if (at.isReadOnly) left.MakeReadOnly(inside);
    }
  }
}

std::size_t LossyFiles::NewNode(bool isFolder) {
  nodes_.emplace_back().isFolder = isFolder;
  return nodes_.size() - 1;
}

// Nothing when a folder on the way is missing.
std::optional<LossyFiles::Place> LossyFiles::Find(const std::wstring& path) const {
  const std::vector<std::wstring> components = Components(path);
  if (components.empty()) return std::nullopt;
  Place place;
  for (std::size_t i = 0;; ++i) {
    place.spelled = components[i];
    place.folded = FoldedName(components[i]);
    const Names& names = nodes_[place.folder].names;
    const auto found = names.find(place.folded);
    place.node = found == names.end() ? std::nullopt : std::optional(found->second.node);
    if (i + 1 == components.size()) return place;
    if (!place.node || !nodes_[*place.node].isFolder) return std::nullopt;
    place.folder = *place.node;
  }
}

const LossyFiles::Node* LossyFiles::NodeAt(const std::wstring& path) const {
  const auto place = Find(path);
  return place && place->node && !power_.IsGone() ? &nodes_[*place->node] : nullptr;
}

void LossyFiles::ChangeNames(std::vector<NameChange> changes) {
  for (const NameChange& change : changes) {
    Names& names = nodes_[change.folder].names;
    if (change.name) {
      names[change.folded] = *change.name;
    } else {
      names.erase(change.folded);
    }
  }
  waiting_.push_back({++nameOperations_, std::move(changes)});
}

// A later operation on the same name may be safe already.
void LossyFiles::MakeSafe(std::vector<Node>& nodes, const NameOperation& operation) {
  for (const NameChange& change : operation.changes) {
    Node& folder = nodes[change.folder];
    std::size_t& since = folder.safeSince[change.folded];
    if (since > operation.number) continue;
    since = operation.number;
    if (change.name) {
      folder.safeNames[change.folded] = *change.name;
    } else {
      folder.safeNames.erase(change.folded);
    }
  }
}

void LossyFiles::FlushFolder(std::size_t folder) {
  const auto concerns = [folder](const NameOperation& operation) {
    return std::ranges::any_of(
        operation.changes, [folder](const NameChange& change) { return change.folder == folder; });
  };
  for (const NameOperation& operation : waiting_) {
    if (concerns(operation)) MakeSafe(nodes_, operation);
  }
  std::erase_if(waiting_, concerns);
}

SystemCode LossyFiles::Flush(std::span<const std::wstring> paths) {
  if (!power_.Lasts()) return kGeneralFailure;
  for (const std::wstring& path : paths) {
    const auto place = Find(path);
    if (!place || !place->node) continue;
    Node& node = nodes_[*place->node];
    if (node.isFolder) FlushFolder(*place->node);
    node.safeBytes = node.bytes;
  }
  return kSystemOk;
}

bool LossyFiles::Exists(const std::wstring& path) const { return NodeAt(path) != nullptr; }

bool LossyFiles::IsFolder(const std::wstring& path) const {
  const Node* const node = NodeAt(path);
  return node != nullptr && node->isFolder;
}

bool LossyFiles::IsReadOnly(const std::wstring& path) const {
  const Node* const node = NodeAt(path);
  return node != nullptr && node->isReadOnly;
}

SystemCode LossyFiles::MissingCode(const std::wstring& path) const {
  return Find(path) ? kFileNotFound : kPathNotFound;
}

SystemCode LossyFiles::ReadFolder(const std::wstring& folder,
                                  std::vector<FolderEntry>& entries) const {
  if (power_.IsGone()) return kGeneralFailure;
  const Node* const node = NodeAt(folder);
  if (node == nullptr) return kPathNotFound;
  if (!node->isFolder) return kNotAFolder;
  entries.clear();
  for (const auto& [folded, name] : node->names) {
    entries.push_back({name.spelled, nodes_[name.node].isFolder, false, false});
  }
  return kSystemOk;
}

SystemCode LossyFiles::ReadBytes(const std::wstring& path, std::string& bytes) const {
  if (power_.IsGone()) return kGeneralFailure;
  const Node* const node = NodeAt(path);
  if (node == nullptr) return MissingCode(path);
  if (node->isFolder) return kAccessDenied;
  bytes = node->bytes;
  return kSystemOk;
}

SystemCode LossyFiles::ReadInParts(const std::wstring& path, const TakePart& take) const {
  std::string bytes;
  const SystemCode code = ReadBytes(path, bytes);
  if (code == kSystemOk && !bytes.empty()) take(bytes, bytes.size());
  return code;
}

std::uint64_t LossyFiles::FileBytes(const std::wstring& path) const {
  const Node* const node = NodeAt(path);
  return node == nullptr ? 0 : node->bytes.size();
}

SystemCode LossyFiles::MayStore(const std::wstring& path) const {
  const auto place = Find(path);
  if (!place) return kPathNotFound;
  if (!place->node) return kSystemOk;
  const Node& node = nodes_[*place->node];
  return node.isFolder || node.isReadOnly ? kAccessDenied : kSystemOk;
}

// A new file that takes the name of the old one.
SystemCode LossyFiles::Store(const std::wstring& path, std::string_view bytes, bool isSafe) {
  if (!power_.Lasts()) return kGeneralFailure;
  if (const SystemCode code = MayStore(path); code != kSystemOk) return code;
  const Place place = *Find(path);
  const std::wstring spelled =
      place.node ? nodes_[place.folder].names.at(place.folded).spelled : place.spelled;
  const std::size_t node = NewNode(false);
  nodes_[node].bytes = bytes;
  if (isSafe) nodes_[node].safeBytes = bytes;
  ChangeNames({{place.folder, place.folded, Name{spelled, node}}});
  return kSystemOk;
}

SystemCode LossyFiles::WriteSafely(const std::wstring& path, std::string_view bytes) {
  return Store(path, bytes, true);
}

SystemCode LossyFiles::WriteBytes(const std::wstring& path, std::string_view bytes) {
  return Store(path, bytes, false);
}

SystemCode LossyFiles::CreateEmptyFile(const std::wstring& path) { return WriteBytes(path, ""); }

SystemCode LossyFiles::CreateFolder(const std::wstring& path) {
  if (!power_.Lasts()) return kGeneralFailure;
  const auto place = Find(path);
  if (!place) return kPathNotFound;
  if (place->node) return kAlreadyExists;
  const std::size_t node = NewNode(true);
  ChangeNames({{place->folder, place->folded, Name{place->spelled, node}}});
  return kSystemOk;
}

SystemCode LossyFiles::RemoveFile(const std::wstring& path) {
  if (!power_.Lasts()) return kGeneralFailure;
  const auto place = Find(path);
  if (!place || !place->node) return MissingCode(path);
  const Node& node = nodes_[*place->node];
  if (node.isFolder || node.isReadOnly) return kAccessDenied;
  ChangeNames({{place->folder, place->folded, std::nullopt}});
  held_.erase(FoldedName(TidyPath(path)));
  return kSystemOk;
}

SystemCode LossyFiles::RemoveFolder(const std::wstring& path) {
  if (!power_.Lasts()) return kGeneralFailure;
  const auto place = Find(path);
  if (!place || !place->node) return MissingCode(path);
  const Node& node = nodes_[*place->node];
  if (!node.isFolder) return kNotAFolder;
  if (!node.names.empty()) return kFolderNotEmpty;
  ChangeNames({{place->folder, place->folded, std::nullopt}});
  return kSystemOk;
}

class LossyFiles::Replacement : public FileReplacement {
 public:
  Replacement(LossyFiles& files, std::wstring path) : files_(files), path_(std::move(path)) {}
  SystemCode Append(std::string_view part) override {
    bytes_ += part;
    return files_.power_.Lasts() ? kSystemOk : kGeneralFailure;
  }
  SystemCode Complete() override { return files_.WriteBytes(path_, bytes_); }

 private:
  LossyFiles& files_;
  std::wstring path_;
  std::string bytes_;
};

SystemCode LossyFiles::BeginReplacement(const std::wstring& path, std::uint64_t /*expectedBytes*/,
                                        std::unique_ptr<FileReplacement>& replacement) {
  if (!power_.Lasts()) return kGeneralFailure;
  if (const SystemCode code = MayStore(path); code != kSystemOk) return code;
  replacement = std::make_unique<Replacement>(*this, path);
  return kSystemOk;
}

class LossyFiles::Appender : public FileAppender {
 public:
  Appender(LossyFiles& files, std::size_t node) : files_(files), node_(node) {}
  SystemCode Append(std::string_view bytes) override {
    if (!files_.power_.Lasts()) return kGeneralFailure;
    files_.nodes_[node_].bytes += bytes;
    return kSystemOk;
  }
  SystemCode FlushToDisk() override {
    if (!files_.power_.Lasts()) return kGeneralFailure;
    files_.nodes_[node_].safeBytes = files_.nodes_[node_].bytes;
    return kSystemOk;
  }

 private:
  LossyFiles& files_;
  std::size_t node_;
};

SystemCode LossyFiles::OpenToAppend(const std::wstring& path,
                                    std::unique_ptr<FileAppender>& appender) {
  if (power_.IsGone()) return kGeneralFailure;
  const SystemCode code = Exists(path) ? MayStore(path) : WriteBytes(path, "");
  if (code == kSystemOk) appender = std::make_unique<Appender>(*this, *Find(path)->node);
  return code;
}

SystemCode LossyFiles::HoldFile(const std::wstring& path, FileHold hold) {
  const std::u16string folded = FoldedName(TidyPath(path));
  if (held_.contains(folded)) return kSharingViolation;
  if (!Exists(path)) {
    if (hold == FileHold::kTake) return MissingCode(path);
    if (const SystemCode code = WriteBytes(path, ""); code != kSystemOk) return code;
  }
  held_.insert(folded);
  return kSystemOk;
}

SystemCode LossyFiles::CopyOver(const std::wstring& source, const std::wstring& target) {
  std::string bytes;
  const SystemCode code = ReadBytes(source, bytes);
  return code == kSystemOk ? WriteBytes(target, bytes) : code;
}

SystemCode LossyFiles::MoveTo(const std::wstring& source, const std::wstring& target) {
  if (!power_.Lasts()) return kGeneralFailure;
  const auto from = Find(source);
  const auto to = Find(target);
  if (!from || !from->node) return MissingCode(source);
  if (!to) return kPathNotFound;
  const bool isRespelled = from->folder == to->folder && from->folded == to->folded;
  if (to->node && !isRespelled) return kAlreadyExists;
  std::vector<NameChange> changes;
  if (!isRespelled) changes.push_back({from->folder, from->folded, std::nullopt});
  changes.push_back({to->folder, to->folded, Name{to->spelled, *from->node}});
  ChangeNames(std::move(changes));
  return kSystemOk;
}

namespace {

std::size_t IndexOf(RegistryHive hive) { return static_cast<std::size_t>(hive); }

constexpr RegistryHive kHives[] = {RegistryHive::kCurrentUser, RegistryHive::kLocalMachine};

}  // namespace

LossyRegistry::LossyRegistry(MemoryRegistry& registry, Power& power)
    : ForwardingRegistry(registry), registry_(registry), power_(power) {
  for (const RegistryHive hive : kHives) safe_[IndexOf(hive)].CopyFrom(registry.Root(hive));
}

void LossyRegistry::Lose(std::mt19937& random, MemoryRegistry& left) const {
  const unsigned share = AnyShare(random);
  std::array<RegistryKey, 2> roots;
  for (const RegistryHive hive : kHives) roots[IndexOf(hive)].CopyFrom(safe_[IndexOf(hive)]);
  for (const HiveChange& change : waiting_) {
    if (Below(random, 100) < share) change.change(roots[IndexOf(change.hive)]);
  }
  for (const RegistryHive hive : kHives) left.Root(hive) = std::move(roots[IndexOf(hive)]);
}

void LossyRegistry::Make(RegistryHive hive, Change change) {
  change(registry_.Root(hive));
  waiting_.push_back({hive, std::move(change)});
}

bool LossyRegistry::Merge(const RegistryFile& file) {
  for (const RegistryKeyChange& key : file.keys) {
    if (!power_.Lasts()) return false;
    Make(key.hive, [key](RegistryKey& root) { ApplyRegistryFile({{key}, {}}, key.hive, root); });
  }
  return true;
}

SystemCode LossyRegistry::SetValues(RegistryHive hive, const std::wstring& keyPath,
                                    const std::vector<RegistryValue>& values) {
  if (!power_.Lasts()) return kGeneralFailure;
  if (!CanOpenKey(hive, keyPath)) return kFileNotFound;
  for (const RegistryValue& value : values) {
    Make(hive, [keyPath, value](RegistryKey& root) { root.Make(keyPath).SetValue(value); });
  }
  return kSystemOk;
}

SystemCode LossyRegistry::CreateKey(RegistryHive hive, const std::wstring& keyPath) {
  if (!power_.Lasts()) return kGeneralFailure;
  Make(hive, [keyPath](RegistryKey& root) { root.Make(keyPath); });
  return kSystemOk;
}

SystemCode LossyRegistry::DeleteValue(RegistryHive hive, const std::wstring& keyPath,
                                      const std::wstring& name) {
  if (!power_.Lasts()) return kGeneralFailure;
  if (!ValueType(hive, keyPath, name)) return kFileNotFound;
  Make(hive, [keyPath, name](RegistryKey& root) {
    if (root.Find(keyPath) != nullptr) root.Make(keyPath).RemoveValue(name);
  });
  return kSystemOk;
}

SystemCode LossyRegistry::DeleteTree(RegistryHive hive, const std::wstring& keyPath) {
  if (!power_.Lasts()) return kGeneralFailure;
  if (keyPath.empty()) return kInvalidName;
  if (!CanOpenKey(hive, keyPath)) return kFileNotFound;
  Make(hive, [keyPath](RegistryKey& root) { root.Remove(keyPath); });
  return kSystemOk;
}

SystemCode LossyRegistry::CopyTree(RegistryHive sourceHive, const std::wstring& sourcePath,
                                   RegistryHive targetHive, const std::wstring& targetPath) {
  if (!power_.Lasts()) return kGeneralFailure;
  const RegistryKey* const source = registry_.Root(sourceHive).Find(sourcePath);
  if (source == nullptr) return kFileNotFound;
  const auto copy = std::make_shared<RegistryKey>();
  copy->CopyFrom(*source);
  Make(targetHive,
       [copy, targetPath](RegistryKey& root) { root.Make(targetPath).CopyFrom(*copy); });
  return kSystemOk;
}

SystemCode LossyRegistry::Flush(RegistryHive hive) {
  if (!power_.Lasts()) return kGeneralFailure;
  for (const HiveChange& change : waiting_) {
    if (change.hive == hive) change.change(safe_[IndexOf(hive)]);
  }
  std::erase_if(waiting_, [hive](const HiveChange& change) { return change.hive == hive; });
  return kSystemOk;
}

class LossyMachine::Tool : public RegistryTool {
 public:
  Tool(LossyFiles& files, LossyRegistry& registry, const MemoryRegistry& keys)
      : files_(files), registry_(registry), keys_(keys) {}

  std::unique_ptr<RunningTool> ExportKey(const std::wstring& keyPath,
                                         const std::wstring& filePath) override {
    const std::wstring path = keyPath.substr(keyPath.find(L'\\') + 1);
    const RegistryKey* const key = keys_.Root(RegistryHive::kCurrentUser).Find(path);
    if (key == nullptr) return std::make_unique<EndedTool>(false);
    const auto bytes = EncodeText(
        {WriteRegistryFile(RegistryHive::kCurrentUser, path, *key, RegistryFileForm::kExport),
         true});
    return std::make_unique<EndedTool>(
        files_.WriteBytes(filePath, std::string(bytes.begin(), bytes.end())) == kSystemOk);
  }
  std::unique_ptr<RunningTool> ImportFile(const std::wstring& filePath) override {
    const auto file = ReadRegistryFile(files_, filePath);
    return std::make_unique<EndedTool>(file && registry_.Merge(*file));
  }

 private:
  LossyFiles& files_;
  LossyRegistry& registry_;
  const MemoryRegistry& keys_;
};

LossyMachine::LossyMachine(MemoryMachine& machine, std::size_t lastOperation)
    : machine_(machine),
      power_(lastOperation),
      files_(machine.files, power_),
      registry_(machine.registry, power_),
      archives_(files_, [this](const std::wstring& path,
                               std::string_view bytes) { return files_.WriteSafely(path, bytes); }),
      tool_(std::make_unique<Tool>(files_, registry_, machine.registry)) {}

Machine LossyMachine::Ports() {
  Machine ports = machine_.Ports();
  ports.files = &files_;
  ports.registry = &registry_;
  ports.profiles = &profiles_;
  ports.archives = &archives_;
  ports.registryTool = tool_.get();
  return ports;
}

void LossyMachine::Keep() { files_.Keep(machine_.files); }

void LossyMachine::Lose(std::mt19937& random) {
  registry_.Lose(random, machine_.registry);
  files_.Lose(random, machine_.files);
}

}  // namespace carrovan
