// Devices that were attached, and what Defender found.
#include "questions/answers.h"
#include "questions/codes.h"

namespace zanvik::answers {
namespace {

constexpr std::string_view user_mode = "Microsoft-Windows-DriverFrameworks-UserMode";
constexpr std::string_view device_setup = "Microsoft-Windows-Kernel-PnP";
constexpr std::string_view driver_setup = "Microsoft-Windows-UserPnp";

constexpr question_column usb_columns[] = {
    {"device", "Device"},
    {"model", "Model"},
    {"manufacturer", "Manufacturer"},
    {"serial_number", "Serial number"},
    {"bus", "Bus", &codes::bus_types},
    {"size_bytes", "Bytes"},
    {"class", "Class"},
    {"account", "Account"},
};
constexpr question_source usb_sources[] = {
    {"Microsoft-Windows-Partition",
     1006,
     "disk attached or removed",
     {"ParentId", "Model", "Manufacturer", "SerialNumber", "BusType", "Capacity"},
     "ParentId=*USB*"},
    {device_setup,
     400,
     "device set up",
     {"DeviceInstanceId", "DriverName", "DriverProvider", "", "", "", "ClassGuid"},
     "DeviceInstanceId=*USB*"},
    {device_setup,
     410,
     "device started",
     {"DeviceInstanceId", "DriverName", "", "", "", "", "ClassGuid"},
     "DeviceInstanceId=*USB*"},
    {device_setup,
     420,
     "device removed",
     {"DeviceInstanceId", "DriverName", "", "", "", "", "ClassGuid"},
     "DeviceInstanceId=*USB*"},
    {user_mode, 2003, "device attached", {"InstanceId"}, "InstanceId=*USB*"},
    {user_mode, 10000, "driver to be installed", {"DeviceId"}, "DeviceId=*USB*"},
    {driver_setup,
     20001,
     "driver installed",
     {"DeviceInstanceID", "DriverDescription", "DriverProvider", "", "", "", "SetupClass"},
     "DeviceInstanceID=*USB*"},
    {driver_setup,
     20003,
     "driver service added",
     {"DeviceInstanceID", "ServiceName"},
     "DeviceInstanceID=*USB*"},
    {security,
     6416,
     "new device",
     {"DeviceId", "DeviceDescription", "", "", "", "", "ClassName", "SubjectUserName"},
     "DeviceId=*USB*"},
    {security,
     6423,
     "device refused by policy",
     {"DeviceId", "DeviceDescription", "", "", "", "", "ClassName", "SubjectUserName"}},
};

constexpr std::string_view defender_log = "Microsoft-Windows-Windows Defender";

constexpr question_column defender_columns[] = {
    {"threat", "Threat"}, {"severity", "Severity"},        {"category", "Category"},
    {"path", "Path"},     {"process", "Process"},          {"account", "Account"},
    {"action", "Action"}, {"old_value", "Setting before"}, {"new_value", "Setting after"},
};
constexpr question_source defender_sources[] = {
    {defender_log,
     1006,
     "threat found",
     {"Threat Name", "Severity Name", "Category Name", "Path|Path Found", "Process Name",
      "Detection User|User"}},
    {defender_log,
     1007,
     "action taken",
     {"Threat Name", "Severity Name", "Category Name", "Path|Path Found", "Process Name",
      "Detection User|User", "Action Name|Cleaning Action"}},
    {defender_log,
     1116,
     "threat found",
     {"Threat Name", "Severity Name", "Category Name", "Path", "Process Name", "Detection User",
      "Action Name"}},
    {defender_log,
     1117,
     "action taken",
     {"Threat Name", "Severity Name", "Category Name", "Path", "Process Name", "Detection User",
      "Action Name"}},
    {defender_log,
     1118,
     "action failed",
     {"Threat Name", "Severity Name", "Category Name", "Path", "Process Name", "Detection User",
      "Action Name"}},
    {defender_log,
     1119,
     "action failed critically",
     {"Threat Name", "Severity Name", "Category Name", "Path", "Process Name", "Detection User",
      "Action Name"}},
    {defender_log, 1013, "history deleted", {"", "", "", "", "", "User"}},
    {defender_log, 5001, "real-time protection off", {}},
    {defender_log, 5007, "setting changed", {"", "", "", "", "", "", "", "Old Value", "New Value"}},
    {defender_log, 5010, "scanning for spyware off", {}},
    {defender_log, 5012, "scanning for viruses off", {}},
    {defender_log,
     5013,
     "change blocked by tamper protection",
     {"", "", "", "", "", "", "", "Old Value", "Value|New Value"}},
};

}  // namespace

constinit const question_parts usb = {usb_columns, usb_sources};
constinit const question_parts defender = {defender_columns, defender_sources};

}  // namespace zanvik::answers
