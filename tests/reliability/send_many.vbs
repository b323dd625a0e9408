' Sends COUNT one-page faxes through NewMessage.Send, with the automation
' server's temporary files in TEMP, and prints each body name.
'   cscript //nologo send_many.vbs TREE TEMP COUNT
Option Explicit
Dim tree, api, session, message, i
tree = WScript.Arguments(0)
Set api = CreateObject("Vlapi32.VlAPI")
api.SetVelomarDirs tree & "\SERVER", tree & "\SYSTEM", tree & "\USERS", tree & "\REQUEST"
api.SetTempDir WScript.Arguments(1)
Set session = api.Logon("JSMITH", False)
For i = 1 To CInt(WScript.Arguments(2))
  Set message = session.CreateNewMsg
  message.Subject = "Reliability " & i
  message.Text = "One page."
  message.Recipients.AddFaxRecipient "Sales", "", "0123 4567"
  On Error Resume Next
  message.Send
  If Err.Number = 0 Then
    WScript.Echo message.Body
  Else
    WScript.Echo "failed: " & Hex(Err.Number) & " " & Err.Description
  End If
  On Error Goto 0
Next
session.Logoff
