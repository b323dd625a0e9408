' The error convention as a script sees it: the number, source and
' description of each failure, and sessions that have no user.
Option Explicit
Dim tree, api, session, anonymous, message, value, outbox, server, other
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
Set value = anonymous.Server: Show "anonymous Server"
Set message = session.CreateNewMsg
Set outbox = session.Outbox
Set server = session.Server
message.Recipients.AddFaxRecipient "", "Org", "": Show "AddFaxRecipient with no name or number"
Set value = message.Recipients.Item(Empty): Show "Item(Empty) of no recipients"
message.Recipients.AddFaxRecipient String(100000, "R"), "", "0101"
WScript.Echo "  a 100000-character name kept whole: " & Len(message.Recipients(0).To)
Set value = message.Recipients.Item("abc"): Show "Recipients.Item(""abc"")"
message.Files.Add "": Show "Files.Add """""
session.Logoff: Show "Logoff"
value = session.UserArea: Show "UserArea after Logoff"
value = session.SystemArea: Show "SystemArea after Logoff"
message.Send: Show "Send after Logoff"
Set value = outbox.GetMsgList: Show "Outbox kept after Logoff"
value = server.Check: Show "Server kept after Logoff"
value = api.VelomarServer: Show "VelomarServer"
WScript.Echo "  selected server """ & value & """"
Set other = CreateObject("Vlapi32.VlAPI")
other.SetVelomarDirs String(10000, "S"), String(10000, "Y"), String(10000, "U"), String(10000, "R")
Show "SetVelomarDirs with 10000-character directories"
WScript.Echo "  kept: " & Len(other.ServerDir) & " " & Len(other.SystemDir) & " " & _
  Len(other.UsersDir) & " " & Len(other.RequestDir)
