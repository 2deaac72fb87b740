// What a security log says about one account, and when: the text may stand in any value.
!cmd, -enum_evtxlog, -id, 4624, -name, logon, -string_exists, helpdesk, -pull, TargetUserName, -pull, LogonType, -pull, IpAddress
!cmd, -enum_evtxlog, -id, 4723, -name, password change, -string_exists, helpdesk, -pull, SubjectUserName, -pull, TargetUserName
!cmd, -enum_evtxlog, -id, 4724, -name, password reset, -string_exists, helpdesk, -pull, SubjectUserName, -pull, TargetUserName
!cmd, -enum_evtxlog, -id, 4616, -name, clock change, -string_exists, helpdesk, -pull, SubjectUserName, -pull, PreviousTime, -pull, NewTime
!cmd, -enum_evtxlog, -name, anything else in march, -string_exists, helpdesk, -start_time, 2024-03-01, -stop_time, 2024-03-31 23:59:59, -pull, EventID, -pull, SubjectUserName, -pull, TargetUserName
