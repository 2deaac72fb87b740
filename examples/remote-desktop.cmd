// Remote desktop: logons, sessions and who connected from where. Security and TerminalServices logs.
// Of event 1149 Param1 is the account, Param2 the domain and Param3 the address.
!cmd, -enum_evtxlog, -type, security, -id, 4624, -name, remote desktop logon, -conditions, LogonType|10, -pull, TargetUserName, -pull, TargetDomainName, -pull, IpAddress, -pull, WorkstationName, -pull, TargetLogonId
!cmd, -enum_evtxlog, -type, security, -id, 4778, -name, session reconnected, -pull, AccountName, -pull, AccountDomain, -pull, ClientName, -pull, ClientAddress, -pull, SessionName
!cmd, -enum_evtxlog, -type, security, -id, 4779, -name, session disconnected, -pull, AccountName, -pull, AccountDomain, -pull, ClientName, -pull, ClientAddress, -pull, SessionName
!cmd, -enum_evtxlog, -type, remoteconnectionmanager, -id, 1149, -name, connection accepted, -pull, Param1, -pull, Param2, -pull, Param3
!cmd, -enum_evtxlog, -type, localsessionmanager, -id, 21, -name, session logon, -pull, User, -pull, SessionID, -pull, Address
!cmd, -enum_evtxlog, -type, localsessionmanager, -id, 23, -name, session logoff, -pull, User, -pull, SessionID, -pull, Address
!cmd, -enum_evtxlog, -type, localsessionmanager, -id, 24, -name, session disconnected, -pull, User, -pull, SessionID, -pull, Address
!cmd, -enum_evtxlog, -type, localsessionmanager, -id, 25, -name, session reconnected, -pull, User, -pull, SessionID, -pull, Address
