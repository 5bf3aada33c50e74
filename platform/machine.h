#pragma once

#include "platform/archive_library.h"
#include "platform/clock.h"
#include "platform/code_page.h"
#include "platform/command_interpreter.h"
#include "platform/file_system.h"
#include "platform/guid_source.h"
#include "platform/known_folders.h"
#include "platform/process_list.h"
#include "platform/product_identity.h"
#include "platform/profile_file.h"
#include "platform/registry.h"
#include "platform/registry_editor.h"
#include "platform/user_identity.h"

namespace carrovan {

// The ports of one machine, real or in a folder. Owns nothing: whoever makes a machine keeps its
// parts alive.
struct Machine {
  FileSystem& files;
  RegistryReader& registry;
  KnownFolders& folders;
  GuidSource& guids;
  ProfileFile& profiles;
  ProductIdentity& product;
  ArchiveLibrary& archives;
  CommandInterpreter& interpreter;
  Clock& clock;
  RegistryEditor& registryEditor;
  UserIdentity& user;
  CodePage& codePage;
  ProcessList& processes;
};

// The same machine with one part replaced.
Machine WithFiles(const Machine& machine, FileSystem& files);
Machine WithFolders(const Machine& machine, KnownFolders& folders);
Machine WithGuids(const Machine& machine, GuidSource& guids);
Machine WithProfiles(const Machine& machine, ProfileFile& profiles);
Machine WithArchives(const Machine& machine, ArchiveLibrary& archives);
Machine WithInterpreter(const Machine& machine, CommandInterpreter& interpreter);
Machine WithClock(const Machine& machine, Clock& clock);

}  // namespace carrovan
