// The logs of samples/, in code.
//
// In: nothing. Out: a finished log, the same bytes at each call. All people, machines and events
// are invented; the shapes (providers, field names, types) are those of real Windows logs.
#pragma once

#include "log_builder.h"

namespace zanvik::testing {

// Ten days of logons, failures, run-as, password changes and a clock change on one server.
log_builder security_sample();
// Starts, stops, sleep and service changes of one workstation, from sources of old and new form.
log_builder system_sample();
// A few seconds on a workstation as Sysmon logs them: a document starts a shell, which fetches a
// program that arranges to run at logon.
log_builder sysmon_sample();
// What real logs rarely have; samples/README.md says what is in which record.
log_builder odd_sample();

}  // namespace zanvik::testing
