// Failed logons and what they were followed by, in the columns that matter.
// A line that begins with two slashes is a comment.
!cmd, -enum_evtxlog, -type, security, -id, 4625, -name, failed logon, -pull, TargetUserName, -pull, IpAddress, -pull, WorkstationName, -pull, LogonType, -pull, SubStatus
!cmd, -enum_evtxlog, -type, security, -id, 4624, -name, desktop logon, -conditions, LogonType|10, -pull, TargetUserName, -pull, IpAddress
!cmd, -enum_evtxlog, -type, security, -id, 4648, -name, run as, -pull, SubjectUserName, -pull, TargetUserName, -pull, ProcessName
