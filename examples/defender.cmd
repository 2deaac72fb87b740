// What Defender found, did, and had switched off. Its operational log.
!cmd, -enum_evtxlog, -type, windows defender, -id, 1116, -name, malware found, -pull, Threat Name, -pull, Severity Name, -pull, Path, -pull, Detection User, -pull, Process Name
!cmd, -enum_evtxlog, -type, windows defender, -id, 1117, -name, action taken, -pull, Threat Name, -pull, Action Name, -pull, Path, -pull, Detection User, -pull, Error Description
!cmd, -enum_evtxlog, -type, windows defender, -id, 5001, -name, real-time protection off, -pull, Product Name, -pull, Computer
!cmd, -enum_evtxlog, -type, windows defender, -id, 5007, -name, configuration changed, -pull, Old Value, -pull, New Value
!cmd, -enum_evtxlog, -type, windows defender, -id, 5013, -name, change blocked, -pull, Changed Type, -pull, Value
