#include "platform/windows/shared_end.h"

namespace carrovan {
namespace {

bool SetLimits(HANDLE job, DWORD flags) {
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
  limits.BasicLimitInformation.LimitFlags = flags;
  return SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof(limits)) !=
         FALSE;
}

}  // namespace

SharedEnd::SharedEnd() : job_(CreateJobObjectW(nullptr, nullptr)) {
  if (job_ && SetLimits(job_.Get(), JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE)) {
    AssignProcessToJobObject(job_.Get(), GetCurrentProcess());
  }
}

// Closing the job would end this program as well.
SharedEnd::~SharedEnd() {
  if (job_) SetLimits(job_.Get(), 0);
}

}  // namespace carrovan
