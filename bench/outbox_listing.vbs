' Lists the outbox that automation_bench leaves behind with For Each,
' reading Body and Status of every message, and prints the time taken.
'   cscript //nologo outbox_listing.vbs TREE
Option Explicit
Dim tree, api, session, start, messages, message, info, body, status, count
tree = WScript.Arguments(0)
Set api = CreateObject("Vlapi32.VlAPI")
api.SetVelomarDirs tree & "\SERVER", tree & "\SYSTEM", tree & "\USERS", tree & "\REQUEST"
Set session = api.Logon("BENCH", False)
start = Timer
Set messages = session.Outbox.GetMsgList
count = 0
For Each message In messages
  Set info = message.GetMsgInfo
  body = info.Body
  status = info.Status
  count = count + 1
Next
WScript.Echo "  VBScript For Each over " & count & " messages, Body and Status of each: " & _
  FormatNumber((Timer - start) * 1000, 0) & " ms"
