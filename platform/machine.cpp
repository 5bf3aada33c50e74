#include "platform/machine.h"

namespace carrovan {

Machine WithFiles(const Machine& m, FileSystem& files) {
  return {files,         m.registry, m.folders,        m.guids, m.profiles, m.product,  m.archives,
          m.interpreter, m.clock,    m.registryEditor, m.user,  m.codePage, m.processes};
}

Machine WithFolders(const Machine& m, KnownFolders& folders) {
  return {m.files,       m.registry, folders,          m.guids, m.profiles, m.product,  m.archives,
          m.interpreter, m.clock,    m.registryEditor, m.user,  m.codePage, m.processes};
}

Machine WithGuids(const Machine& m, GuidSource& guids) {
  return {m.files,       m.registry, m.folders,        guids,  m.profiles, m.product,  m.archives,
          m.interpreter, m.clock,    m.registryEditor, m.user, m.codePage, m.processes};
}

Machine WithProfiles(const Machine& m, ProfileFile& profiles) {
  return {m.files,       m.registry, m.folders,        m.guids, profiles,   m.product,  m.archives,
          m.interpreter, m.clock,    m.registryEditor, m.user,  m.codePage, m.processes};
}

Machine WithArchives(const Machine& m, ArchiveLibrary& archives) {
  return {m.files,       m.registry, m.folders,        m.guids, m.profiles, m.product,  archives,
          m.interpreter, m.clock,    m.registryEditor, m.user,  m.codePage, m.processes};
}

Machine WithInterpreter(const Machine& m, CommandInterpreter& interpreter) {
  return {m.files,     m.registry, m.folders,        m.guids, m.profiles, m.product,  m.archives,
          interpreter, m.clock,    m.registryEditor, m.user,  m.codePage, m.processes};
}

Machine WithClock(const Machine& m, Clock& clock) {
  return {m.files,       m.registry, m.folders,        m.guids, m.profiles, m.product,  m.archives,
          m.interpreter, clock,      m.registryEditor, m.user,  m.codePage, m.processes};
}

}  // namespace carrovan
