// Processes that were started. Security and Sysmon logs.
!cmd, -enum_evtxlog, -type, security, -id, 4688, -name, process created, -pull, SubjectUserName, -pull, SubjectDomainName, -pull, NewProcessName, -pull, CommandLine, -pull, ParentProcessName, -pull, NewProcessId
!cmd, -enum_evtxlog, -type, sysmon, -id, 1, -name, process created, -pull, User, -pull, Image, -pull, CommandLine, -pull, ParentImage, -pull, ParentCommandLine, -pull, ProcessId, -pull, Hashes
