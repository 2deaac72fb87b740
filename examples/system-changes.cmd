// Restarts and errors in system logs, of both kinds: a log takes the lines for its own kind.
!cmd, -enum_evtxlog, -type, system, -id, 1074, -name, restart asked for, -all_data
!cmd, -enum_evtxlog, -type, system, -id, 13, -name, shutdown, -pull, StopTime, -pull, Computer
!cmd, -enum_evtxlog, -type, system, -success_type, error, -name, error, -all_data
!cmd, -enum_evtlog, -type, system, -id, 6006, -name, shutdown, -all_data
!cmd, -enum_evtlog, -type, system, -success_type, error, -name, error, -pull, source name, -pull, computer name, -pull, text_1
