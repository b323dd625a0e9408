' Waits up to a time limit until every message of the outbox has reached a
' final state (OK or failed), then prints the count of each state.
'   cscript //nologo final_states.vbs TREE SECONDS
Option Explicit
Dim tree, api, session, deadline, pending, states, message, status
tree = WScript.Arguments(0)
Set api = CreateObject("Vlapi32.VlAPI")
api.SetVelomarDirs tree & "\SERVER", tree & "\SYSTEM", tree & "\USERS", tree & "\REQUEST"
Set session = api.Logon("JSMITH", False)
deadline = DateAdd("s", CLng(WScript.Arguments(1)), Now)
Do
  Set states = CreateObject("Scripting.Dictionary")
  pending = 0
  For Each message In session.Outbox.GetMsgList
    status = message.GetMsgInfo.Status
    states(status) = states(status) + 1
    If status <> 30 And status <> 31 Then pending = pending + 1
  Next
  If pending = 0 Or Now > deadline Then Exit Do
Loop
For Each status In states.Keys
  WScript.Echo "status " & status & ": " & states(status)
Next
