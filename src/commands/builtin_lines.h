// The lines of the built-in reports, as data: a table for each report and kind of log.
//
// They are lines of the command language, split at their commas like any other: a caption with a
// comma ends there, and the rest is a token that no option takes. Columns of legacy logs are
// written "1|UserName", which is not an index for that reader, so these columns show "-"; reports
// use only the names. That, the spelling of some captions and the doubled "-pull" of ID 629 are
// meant. All texts live for the whole run.
#pragma once

#include <span>
#include <string_view>

namespace zanvik::builtin_lines {

using table = std::span<const std::string_view>;

extern const table pw_evt;
extern const table pw_evtx;
extern const table time_evt;
extern const table time_evtx;
extern const table logon_evt;
extern const table logon_evtx;
extern const table startstop_evt;
extern const table startstop_evtx;
extern const table creds_evt;
extern const table creds_evtx;
extern const table partition_evtx;
extern const table usb_system;
extern const table usb_driverframeworks;
extern const table usb_kernel_pnp;

}  // namespace zanvik::builtin_lines
