' sample_client.vbs - the automation server from end to end, as a script
' uses it:
'
'   cscript //nologo sample_client.vbs
'
' Logs the user JSMITH on through his account DOMAIN\jsmith, starts the fax
' server when it is not running, sends a fax to three addressees, follows it
' through the Outbox until the server has completed it (printing every
' change of status, then its history), prints the server's queue, devices,
' links, coversheets and letterheads, and stops the server.
'
' The library finds the fax tree through the per-user VLCLIENT.INI, which
' "vlsim --make-tree DIR --client-ini" writes; the server is registered with
' "regsvr32 Vlapi64.dll".
Option Explicit

' Waits ms milliseconds; a host without WScript.Sleep (Wine's) waits busily.
Sub Pause(ms)
  Dim stopAt
  On Error Resume Next
  WScript.Sleep ms
  If Err.Number <> 0 Then
    Err.Clear
    stopAt = Timer + ms / 1000
    Do While Timer < stopAt
    Loop
  End If
End Sub

Dim statusWords
statusWords = Array("", "Adding", "Held", "Deferred", "Waiting", "", "Converting", "Connecting", _
                    "Sending", "", "Aborting", "Incoming")

Function StatusWord(status)
  Select Case status
    Case 30: StatusWord = "OK"
    Case 31: StatusWord = "Failed"
    Case 1, 2, 3, 4, 6, 7, 8, 10, 11: StatusWord = statusWords(status)
    Case Else: StatusWord = "status " & status
  End Select
End Function

Sub WaitFor(server, running, what)
  Dim deadline
  deadline = DateAdd("s", 20, Now)
  Do Until server.Check = running
    If Now > deadline Then
      WScript.Echo "The fax server did not " & what & " within 20 s"
      WScript.Quit 1
    End If
    Pause 200
  Loop
End Sub

Dim api, session, server, message, body, info, last, deadline, entry, serverInfo, device, link, sheet

Set api = CreateObject("Vlapi32.VlAPI")
WScript.Echo "Library version " & api.Version
Set session = api.Logon("DOMAIN\jsmith", False)
WScript.Echo "Logged on as DOMAIN\jsmith"
WScript.Echo "  Out directory: " & session.UserOutDir

Set server = session.Server
If server.Check Then
  WScript.Echo "Fax server is running"
Else
  WScript.Echo "Fax server is not running: starting it"
  server.Start
  WaitFor server, True, "start"
  WScript.Echo "Fax server started"
End If

Set message = session.CreateNewMsg
message.Subject = "Quarterly figures for the sales team"
message.Comment = "Sent by sample_client.vbs"
message.Text = "Dear all," & vbCrLf & vbCrLf & "the quarterly figures are in." & vbCrLf
message.Recipients.AddFaxRecipient "Ann Archer", "Archer & Co", "02015550101"
message.Recipients.AddFaxRecipient "Bob Baker", "Baker Ltd", "02015550102"
message.Recipients.AddFaxRecipient "Carol Clark", "", "02015550103"
message.Send
body = message.Body
WScript.Echo "Submitted message " & body

last = 0
deadline = DateAdd("s", 60, Now)
Do
  Set info = session.Outbox.GetMsg(body).GetMsgInfo
  If info.Status <> last Then
    last = info.Status
    WScript.Echo "  status " & StatusWord(last)
  End If
  If last = 30 Or last = 31 Then Exit Do
  If Now > deadline Then
    WScript.Echo "Message " & body & " not completed within 60 s"
    WScript.Quit 1
  End If
  Pause 200
Loop
For Each entry In session.Outbox.GetMsg(body).GetMsgHistories
  WScript.Echo "  history event " & entry.Event & " at " & entry.Date & ", addressee " & _
    entry.AddrNum & " " & entry.Name & ", " & entry.PagesSent & " page(s), device " & entry.Device
Next
WScript.Echo "Message " & body & " reached " & StatusWord(last) & " (accepted " & info.AcceptedDate & ")"

Set serverInfo = server.GetServerInfo
WScript.Echo "Server status"
WScript.Echo "  Queue: sending " & serverInfo.Sending & ", deferred " & serverInfo.Deferred & _
  ", waiting to resend " & serverInfo.WaitingResend & ", waiting to convert " & _
  serverInfo.WaitingConvert & ", waiting for a device " & serverInfo.WaitingDevice
For Each device In serverInfo.Devices
  WScript.Echo "  Device " & device.Name & ": status " & device.Status & ", sent OK " & _
    device.NumSendOK & ", send fails " & device.NumSendFails
Next
For Each link In serverInfo.Links
  WScript.Echo "  Link to " & link.RemoteServer & ": remote " & link.RemoteStatus & _
    ", local " & link.LocalStatus & ", sent OK " & link.NumSentOK
Next
For Each sheet In serverInfo.Coversheets
  WScript.Echo "  Coversheet " & sheet.Name
Next
For Each sheet In serverInfo.Letterheads
  WScript.Echo "  Letterhead " & sheet.Name
Next

server.Stop
WaitFor server, False, "stop"
WScript.Echo "Fax server stopped"
session.Logoff
