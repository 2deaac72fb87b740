// Words for the codes that events hold.
#pragma once

#include "questions/questions.h"

namespace zanvik::codes {

extern const code_table logon_types;
extern const code_table logon_failures;  // NTSTATUS and Kerberos errors of failed logons
extern const code_table service_types;
extern const code_table start_types;
extern const code_table integrity_levels;
extern const code_table clock_reasons;  // of Kernel-General 1
extern const code_table power_states;   // of Kernel-Power 42 and 107
extern const code_table bus_types;      // of disks
extern const code_table message_words;  // texts of Windows that events name by %% and a number

}  // namespace zanvik::codes
