#include "questions/codes.h"

namespace zanvik::codes {
namespace {

// SECURITY_LOGON_TYPE
constexpr code_word logon_type_rows[] = {
    {"0", "system"},
    {"2", "interactive"},
    {"3", "network"},
    {"4", "batch"},
    {"5", "service"},
    {"7", "unlock"},
    {"8", "network, clear text"},
    {"9", "new credentials"},
    {"10", "remote interactive"},
    {"11", "cached interactive"},
    {"12", "cached remote interactive"},
    {"13", "cached unlock"},
};

constexpr code_word logon_failure_rows[] = {
    // NTSTATUS
    {"0xc000005e", "no logon server available"},
    {"0xc0000064", "no such account"},
    {"0xc000006a", "wrong password"},
    {"0xc000006d", "wrong account or password"},
    {"0xc000006e", "account restriction"},
    {"0xc000006f", "outside the permitted hours"},
    {"0xc0000070", "not permitted from this computer"},
    {"0xc0000071", "password expired"},
    {"0xc0000072", "account disabled"},
    {"0xc00000dc", "server in the wrong state"},
    {"0xc0000133", "clocks differ too much"},
    {"0xc000015b", "logon type not granted"},
    {"0xc000018c", "trust relationship failed"},
    {"0xc0000192", "logon service not started"},
    {"0xc0000193", "account expired"},
    {"0xc0000224", "password has to be changed"},
    {"0xc0000225", "not found"},
    {"0xc0000234", "account locked out"},
    {"0xc00002ee", "failed with insufficient information"},
    {"0xc0000371", "no secrets for the account"},
    {"0xc0000380", "wrong smart card PIN"},
    {"0xc0000388", "downgrade detected"},
    {"0xc0000413", "authentication firewall"},
    // Kerberos errors
    {"0x6", "no such account"},
    {"0x7", "no such service"},
    {"0xc", "not permitted by policy"},
    {"0x12", "account disabled, expired or locked out"},
    {"0x17", "password expired"},
    {"0x18", "wrong password"},
    {"0x25", "clocks differ too much"},
};

constexpr code_word service_type_rows[] = {
    {"0x1", "kernel driver"},
    {"0x2", "file system driver"},
    {"0x8", "recognizer driver"},
    {"0x10", "own process"},
    {"0x20", "shared process"},
    {"0x110", "own process, interactive"},
    {"0x120", "shared process, interactive"},
    // The texts of the Service Control Manager
    {"kernel mode driver", "kernel driver"},
    {"user mode service", "own process"},
};

constexpr code_word start_type_rows[] = {
    {"0", "boot"},
    {"1", "system"},
    {"2", "automatic"},
    {"3", "on demand"},
    {"4", "disabled"},
    // The texts of the Service Control Manager
    {"boot start", "boot"},
    {"system start", "system"},
    {"auto start", "automatic"},
    {"demand start", "on demand"},
};

constexpr code_word integrity_rows[] = {
    {"s-1-16-0", "Untrusted"},     {"s-1-16-4096", "Low"},   {"s-1-16-8192", "Medium"},
    {"s-1-16-8448", "Medium+"},    {"s-1-16-12288", "High"}, {"s-1-16-16384", "System"},
    {"s-1-16-20480", "Protected"},
};

constexpr code_word clock_reason_rows[] = {
    {"1", "an application or a system component"},
    {"2", "the hardware clock"},
    {"3", "another time zone"},
};

// SYSTEM_POWER_STATE
constexpr code_word power_state_rows[] = {
    {"1", "working"},    {"2", "sleep (S1)"},  {"3", "sleep (S2)"},
    {"4", "sleep (S3)"}, {"5", "hibernation"}, {"6", "off"},
};

// STORAGE_BUS_TYPE
constexpr code_word bus_type_rows[] = {
    {"1", "SCSI"},     {"3", "ATA"},   {"6", "Fibre Channel"}, {"7", "USB"},
    {"8", "RAID"},     {"9", "iSCSI"}, {"10", "SAS"},          {"11", "SATA"},
    {"12", "SD card"}, {"13", "MMC"},  {"14", "virtual"},      {"15", "file-backed virtual"},
    {"17", "NVMe"},
};

constexpr code_word message_rows[] = {
    {"%%1793", "not set"},
    {"%%1794", "never"},
    {"%%1936", "full token (default)"},
    {"%%1937", "full token (elevated)"},
    {"%%1938", "limited token"},
    {"%%8272", "System"},
    {"%%8273", "Logon and logoff"},
    {"%%8274", "Object access"},
    {"%%8275", "Use of privileges"},
    {"%%8276", "Detailed tracking"},
    {"%%8277", "Policy change"},
    {"%%8278", "Account management"},
    {"%%8279", "Directory service access"},
    {"%%8280", "Account logon"},
    {"%%8448", "success removed"},
    {"%%8449", "success added"},
    {"%%8450", "failure removed"},
    {"%%8451", "failure added"},
    {"%%8448, %%8450", "success and failure removed"},
    {"%%8449, %%8451", "success and failure added"},
};

}  // namespace

constinit const code_table logon_types = {"logon_types", logon_type_rows};
constinit const code_table logon_failures = {"logon_failures", logon_failure_rows};
constinit const code_table service_types = {"service_types", service_type_rows};
constinit const code_table start_types = {"start_types", start_type_rows};
constinit const code_table integrity_levels = {"integrity_levels", integrity_rows};
constinit const code_table clock_reasons = {"clock_reasons", clock_reason_rows};
constinit const code_table power_states = {"power_states", power_state_rows};
constinit const code_table bus_types = {"bus_types", bus_type_rows};
constinit const code_table message_words = {"message_words", message_rows};

}  // namespace zanvik::codes
