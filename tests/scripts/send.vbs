' needs: simulator. A message given properties of each kind (every line of
' its submit file is the automation tests'), sent and followed through the
' Outbox until the server has completed it; hold, release and abort; the
' server's status and lists, each listed with For Each.
Option Explicit
Dim tree, api, session, server, info, item, message, body, held, aborted

tree = WScript.Arguments(0)
Set api = CreateObject("Vlapi32.VlAPI")
api.SetVelomarDirs tree & "\SERVER", tree & "\SYSTEM", tree & "\USERS", tree & "\REQUEST"
api.SetTempDir tree & "\USERS\JSMITH\V-DB"
Set session = api.Logon("JSMITH", False)
Set server = session.Server
WScript.Echo "Server running: " & server.Check

' Waits until the message reaches status, or 30 s have gone.
Function WaitFor(body, status)
  Dim deadline, current
  deadline = DateAdd("s", 30, Now)
  Do
    current = session.Outbox.GetMsg(body).GetMsgInfo.Status
    If current = status Or Now > deadline Then Exit Do
  Loop
  WaitFor = current
End Function

Set message = session.CreateNewMsg
message.Subject = "Every property"
message.Comment = "comment"
message.CustomField = "custom"
message.Text = "The text part."
message.Priority = 3
message.Hold = False
message.Delete = False
message.Recipients.AddFaxRecipient "Ann Archer", "Archer & Co", "02015550101"
message.Recipients.AddFaxRecipient "Bob Baker", "", "02015550102"
message.Attachments.Add "REPORT.PDF"
message.Send
body = message.Body
WScript.Echo "Sent " & body & ", reached status " & WaitFor(body, 30)

For Each item In session.Outbox.GetMsgList
  Set info = item.GetMsgInfo
  WScript.Echo "Outbox: " & info.Body & " status " & info.Status & " | " & info.Subject & _
    " | " & info.Comment & " | " & info.CustomField & " | type " & info.Type
Next
For Each item In session.Outbox.GetMsg(body).GetMsgRecipients
  WScript.Echo "  recipient " & item.To & " | " & item.Fax & " | status " & item.Status
Next

Set message = session.CreateNewMsg
message.Subject = "Held"
message.Hold = True
message.Recipients.AddFaxRecipient "Carol Clark", "", "02015550103"
message.Send
held = message.Body
WScript.Echo "Held message: status " & WaitFor(held, 2)
session.Outbox.GetMsg(held).ReleaseMsg
WScript.Echo "Released: status " & WaitFor(held, 30)
message.Subject = "Aborted"
message.Send
aborted = message.Body
WScript.Echo "Second held message: status " & WaitFor(aborted, 2)
session.Outbox.GetMsg(aborted).AbortMsg
WScript.Echo "Aborted: status " & WaitFor(aborted, 31)
WScript.Echo "Outbox holds " & session.Outbox.GetMsgList.Count & " messages"

Set info = server.GetServerInfo
WScript.Echo "Devices " & info.Devices.Count & " of " & info.MaxDevices & ", links " & info.Links.Count
For Each item In info.Coversheets
  WScript.Echo "  coversheet " & item.Name
Next
For Each item In info.Letterheads
  WScript.Echo "  letterhead " & item.Name
Next
server.Stop
Do While server.Check
Loop
WScript.Echo "Server running: " & server.Check
session.Logoff
