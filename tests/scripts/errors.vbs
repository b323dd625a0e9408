' The error convention as a script sees it: the number, source and
' description of each failure, and sessions that have no user.
Option Explicit
Dim tree, api, session, anonymous, message, value
tree = WScript.Arguments(0)

Sub Show(what)
  If Err.Number = 0 Then
    WScript.Echo what & ": OK"
  Else
    WScript.Echo what & ": " & Hex(Err.Number) & " | " & Err.Source & " | " & Err.Description
  End If
  Err.Clear
End Sub

Set api = CreateObject("Vlapi32.VlAPI")
WScript.Echo "Version " & api.Version
api.SetVelomarDirs tree & "\SERVER", tree & "\SYSTEM", tree & "\USERS", tree & "\REQUEST"
WScript.Echo "Areas " & api.ServerDir & " " & api.UsersDir & " " & api.RequestDir
api.SetVelomarDirs tree & "\SERVER", tree & "\SYSTEM", String(70, "U"), tree & "\REQUEST"
WScript.Echo "Users area kept: " & Len(api.UsersDir) & " characters"
api.SetVelomarDirs tree & "\SERVER", tree & "\SYSTEM", tree & "\USERS", tree & "\REQUEST"

On Error Resume Next
api.AutoTempDirectory = False: Show "AutoTempDirectory unchanged"
Set session = api.Logon("NOBODY", False): Show "Logon NOBODY"
api.SetVelomarDirs "A", "B", "C", "D": Show "SetVelomarDirs after a logon"
api.AutoTempDirectory = True: Show "AutoTempDirectory changed after a logon"
api.Escape "NOSUCHSWITCH", 1: Show "Escape NOSUCHSWITCH"
Set session = api.Logon("JSMITH", False): Show "Logon JSMITH"
WScript.Echo "  user area " & session.UserArea
Set anonymous = api.LogonAnonymous: Show "LogonAnonymous"
WScript.Echo "  system area " & anonymous.SystemArea
value = anonymous.UserArea: Show "anonymous UserArea"
Set message = anonymous.CreateNewMsg: Show "anonymous CreateNewMsg"
Set value = anonymous.Outbox: Show "anonymous Outbox"
Set value = anonymous.Server: Show "anonymous Server"
Set message = session.CreateNewMsg
message.Recipients.AddFaxRecipient "", "Org", "": Show "AddFaxRecipient with no name or number"
Set value = message.Recipients.Item("abc"): Show "Recipients.Item(""abc"")"
Set value = message.Recipients.Item(5): Show "Recipients.Item(5)"
message.Files.Add "": Show "Files.Add """""
Set value = session.Outbox.GetMsg("NOSUCH").GetMsgInfo: Show "GetMsgInfo of an unknown message"
session.Logoff: Show "Logoff"
session.Logoff: Show "Logoff again"
value = session.UserArea: Show "UserArea after Logoff"
value = session.SystemArea: Show "SystemArea after Logoff"
message.Send: Show "Send after Logoff"
value = api.VelomarServer: Show "VelomarServer"
WScript.Echo "  selected server """ & value & """"
