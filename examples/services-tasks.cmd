// Services installed, scheduled tasks made, changed and run. System, Security and TaskScheduler logs.
!cmd, -enum_evtxlog, -type, system, -id, 7045, -name, service installed, -pull, ServiceName, -pull, ImagePath, -pull, ServiceType, -pull, StartType, -pull, AccountName
!cmd, -enum_evtxlog, -type, security, -id, 4697, -name, service installed, -pull, SubjectUserName, -pull, SubjectDomainName, -pull, ServiceName, -pull, ServiceFileName, -pull, ServiceAccount
!cmd, -enum_evtxlog, -type, security, -id, 4698, -name, task created, -pull, SubjectUserName, -pull, SubjectDomainName, -pull, TaskName, -pull, TaskContent
!cmd, -enum_evtxlog, -type, security, -id, 4699, -name, task deleted, -pull, SubjectUserName, -pull, SubjectDomainName, -pull, TaskName
!cmd, -enum_evtxlog, -type, security, -id, 4702, -name, task changed, -pull, SubjectUserName, -pull, SubjectDomainName, -pull, TaskName, -pull, TaskContentNew
!cmd, -enum_evtxlog, -type, taskscheduler, -id, 106, -name, task registered, -pull, TaskName, -pull, UserContext
!cmd, -enum_evtxlog, -type, taskscheduler, -id, 140, -name, task updated, -pull, TaskName, -pull, UserName
!cmd, -enum_evtxlog, -type, taskscheduler, -id, 141, -name, task deleted, -pull, TaskName, -pull, UserName
!cmd, -enum_evtxlog, -type, taskscheduler, -id, 200, -name, task started an action, -pull, TaskName, -pull, ActionName
!cmd, -enum_evtxlog, -type, taskscheduler, -id, 201, -name, task ended an action, -pull, TaskName, -pull, ActionName, -pull, ResultCode
