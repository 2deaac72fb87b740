// Accounts and groups made and changed. Security log; -full_sids shows the members of groups.
!cmd, -enum_evtxlog, -type, security, -id, 4720, -name, account created, -pull, SubjectUserName, -pull, SubjectDomainName, -pull, TargetUserName, -pull, TargetDomainName
!cmd, -enum_evtxlog, -type, security, -id, 4722, -name, account enabled, -pull, SubjectUserName, -pull, SubjectDomainName, -pull, TargetUserName, -pull, TargetDomainName
!cmd, -enum_evtxlog, -type, security, -id, 4723, -name, password change, -pull, SubjectUserName, -pull, SubjectDomainName, -pull, TargetUserName, -pull, TargetDomainName
!cmd, -enum_evtxlog, -type, security, -id, 4724, -name, password reset, -pull, SubjectUserName, -pull, SubjectDomainName, -pull, TargetUserName, -pull, TargetDomainName
!cmd, -enum_evtxlog, -type, security, -id, 4725, -name, account disabled, -pull, SubjectUserName, -pull, SubjectDomainName, -pull, TargetUserName, -pull, TargetDomainName
!cmd, -enum_evtxlog, -type, security, -id, 4726, -name, account deleted, -pull, SubjectUserName, -pull, SubjectDomainName, -pull, TargetUserName, -pull, TargetDomainName
!cmd, -enum_evtxlog, -type, security, -id, 4738, -name, account changed, -pull, SubjectUserName, -pull, SubjectDomainName, -pull, TargetUserName, -pull, TargetDomainName
!cmd, -enum_evtxlog, -type, security, -id, 4740, -name, account locked out, -pull, SubjectUserName, -pull, SubjectDomainName, -pull, TargetUserName, -pull, TargetDomainName
!cmd, -enum_evtxlog, -type, security, -id, 4767, -name, account unlocked, -pull, SubjectUserName, -pull, SubjectDomainName, -pull, TargetUserName, -pull, TargetDomainName
!cmd, -enum_evtxlog, -type, security, -id, 4781, -name, account renamed, -pull, SubjectUserName, -pull, SubjectDomainName, -pull, TargetUserName, -pull, TargetDomainName
!cmd, -enum_evtxlog, -type, security, -id, 4728, -name, added to global group, -pull, SubjectUserName, -pull, SubjectDomainName, -pull, TargetUserName, -pull, TargetDomainName, -pull, MemberName, -pull, MemberSid
!cmd, -enum_evtxlog, -type, security, -id, 4729, -name, removed from global group, -pull, SubjectUserName, -pull, SubjectDomainName, -pull, TargetUserName, -pull, TargetDomainName, -pull, MemberName, -pull, MemberSid
!cmd, -enum_evtxlog, -type, security, -id, 4732, -name, added to local group, -pull, SubjectUserName, -pull, SubjectDomainName, -pull, TargetUserName, -pull, TargetDomainName, -pull, MemberName, -pull, MemberSid
!cmd, -enum_evtxlog, -type, security, -id, 4733, -name, removed from local group, -pull, SubjectUserName, -pull, SubjectDomainName, -pull, TargetUserName, -pull, TargetDomainName, -pull, MemberName, -pull, MemberSid
!cmd, -enum_evtxlog, -type, security, -id, 4756, -name, added to universal group, -pull, SubjectUserName, -pull, SubjectDomainName, -pull, TargetUserName, -pull, TargetDomainName, -pull, MemberName, -pull, MemberSid
!cmd, -enum_evtxlog, -type, security, -id, 4757, -name, removed from universal group, -pull, SubjectUserName, -pull, SubjectDomainName, -pull, TargetUserName, -pull, TargetDomainName, -pull, MemberName, -pull, MemberSid
