// The logs of samples/: what each holds, in code.
//
// In: nothing. Out: a finished log, the same bytes at each call. All people, machines and events
// are invented; the shapes (providers, field names, types) are those of live Windows logs.
#pragma once

#include "log_builder.h"

namespace zanvik::testing {

// Ten days of logons, failures, run-as, password changes and a clock change on one server.
log_builder security_sample();
// Starts, stops, sleep and service changes of one workstation, from sources of old and new form.
log_builder system_sample();
// A few seconds on a workstation as Sysmon tells them: a document that starts a shell, which
// fetches a program that stays.
log_builder sysmon_sample();
// What live logs rarely show; samples/README.md says which record is what.
log_builder odd_sample();

}  // namespace zanvik::testing
