// Logons with account, address and type, and what belongs to them. Security log.
!cmd, -enum_evtxlog, -type, security, -id, 4624, -name, logon, -pull, TargetUserName, -pull, TargetDomainName, -pull, LogonType, -pull, IpAddress, -pull, WorkstationName, -pull, TargetLogonId, -pull, ProcessName
!cmd, -enum_evtxlog, -type, security, -id, 4625, -name, failed logon, -pull, TargetUserName, -pull, TargetDomainName, -pull, LogonType, -pull, IpAddress, -pull, WorkstationName, -pull, Status, -pull, SubStatus
!cmd, -enum_evtxlog, -type, security, -id, 4634, -name, logoff, -pull, TargetUserName, -pull, TargetDomainName, -pull, LogonType, -pull, TargetLogonId
!cmd, -enum_evtxlog, -type, security, -id, 4648, -name, logon with other credentials, -pull, SubjectUserName, -pull, SubjectDomainName, -pull, TargetUserName, -pull, TargetDomainName, -pull, TargetServerName, -pull, ProcessName, -pull, IpAddress
!cmd, -enum_evtxlog, -type, security, -id, 4672, -name, special privileges, -pull, SubjectUserName, -pull, SubjectDomainName, -pull, SubjectLogonId, -pull, PrivilegeList
