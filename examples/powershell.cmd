// What PowerShell ran. Both of its logs.
!cmd, -enum_evtxlog, -type, powershell, -id, 4104, -name, script block, -pull, ScriptBlockText, -pull, ScriptBlockId, -pull, MessageNumber, -pull, MessageTotal, -pull, Path, -pull, Security UserID
!cmd, -enum_evtxlog, -type, powershell, -id, 4103, -name, module, -pull, Payload, -pull, ContextInfo
!cmd, -enum_evtxlog, -type, windows powershell, -id, 400, -name, engine started, -pull, Data
!cmd, -enum_evtxlog, -type, windows powershell, -id, 800, -name, pipeline, -pull, Data
