// JScript against the automation server: errors as exceptions, Enumerator
// over the collections, and a message sent and listed.
var tree = WScript.Arguments(0);
var api = new ActiveXObject("Vlapi32.VlAPI");

function hex(number) { return (number >>> 0).toString(16).toUpperCase(); }
function attempt(what, call) {
  try {
    call();
    WScript.Echo(what + ": OK");
  } catch (e) {
    WScript.Echo(what + ": " + hex(e.number) + " | " + e.description);
  }
}
function names(collection, name) {
  var all = [];
  for (var e = new Enumerator(collection); !e.atEnd(); e.moveNext()) all.push(name(e.item()));
  return all.join(", ");
}

api.SetVelomarDirs(tree + "\\SERVER", tree + "\\SYSTEM", tree + "\\USERS", tree + "\\REQUEST");
var session = api.Logon("JSMITH", true);
attempt("Second exclusive logon", function () { api.Logon("JSMITH", true); });
WScript.Echo("Out directory " + session.UserOutDir);

var message = session.CreateNewMsg();
message.Subject = "From JScript";
var recipients = message.Recipients;
recipients.AddFaxRecipient("Ann", "", "0101");
recipients.AddLANRecipient("Bob", "", "BOB");
recipients.AddSMSRecipient("Cid", "Org", "0777");
WScript.Echo("Recipients " + recipients.Count + ": " + names(recipients, function (r) {
  return r.To + "/" + r.Type + "/" + r.Fax;
}));
recipients.Item(1).Delete();
WScript.Echo("After deleting the second: " + names(recipients, function (r) { return r.To; }));
attempt("Item(-1)", function () { recipients.Item(-1); });
WScript.Echo("First by default member: " + recipients(0).To);
WScript.Echo("Outbox: " + session.Outbox.GetMsgList().Count + " messages, new: " +
             session.Outbox.CheckNewMsgStatus());
session.Logoff();
attempt("Outbox after Logoff", function () { session.Outbox; });
