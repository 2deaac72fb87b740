// Logs cleared, and the audit policy changed. Security and System logs.
!cmd, -enum_evtxlog, -type, security, -id, 1102, -name, security log cleared, -pull, SubjectUserName, -pull, SubjectDomainName, -pull, Computer
!cmd, -enum_evtxlog, -type, security, -id, 1100, -name, event logging stopped, -pull, Computer
!cmd, -enum_evtxlog, -type, security, -id, 4719, -name, audit policy changed, -pull, SubjectUserName, -pull, SubjectDomainName, -pull, SubcategoryGuid, -pull, AuditPolicyChanges
!cmd, -enum_evtxlog, -type, system, -id, 104, -name, log cleared, -pull, SubjectUserName, -pull, SubjectDomainName, -pull, BackupPath, -pull, Computer
