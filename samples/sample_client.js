// sample_client.js - the automation server from end to end, in JScript:
//
//   cscript //nologo sample_client.js
//
// The same loop as sample_client.vbs: log JSMITH on through DOMAIN\jsmith,
// start the fax server when it is not running, send a fax to three
// addressees, follow it through the Outbox until it is completed, print the
// server's devices and lists, and stop the server. The fax tree is found
// through the per-user VLCLIENT.INI ("vlsim --make-tree DIR --client-ini").
var statusWords = { 1: "Adding", 2: "Held", 3: "Deferred", 4: "Waiting", 6: "Converting",
                    7: "Connecting", 8: "Sending", 10: "Aborting", 11: "Incoming",
                    30: "OK", 31: "Failed" };

// Waits ms milliseconds; a host without WScript.Sleep (Wine's) waits busily.
function pause(ms) {
  try {
    WScript.Sleep(ms);
  } catch (e) {
    for (var until = new Date().getTime() + ms; new Date().getTime() < until;) {}
  }
}

function statusWord(status) { return statusWords[status] || "status " + status; }

function waitFor(server, running, what) {
  var deadline = new Date().getTime() + 20000;
  while (server.Check() != running) {
    if (new Date().getTime() > deadline) {
      WScript.Echo("The fax server did not " + what + " within 20 s");
      WScript.Quit(1);
    }
    pause(200);
  }
}

function each(collection, show) {
  for (var e = new Enumerator(collection); !e.atEnd(); e.moveNext()) show(e.item());
}

var api = new ActiveXObject("Vlapi32.VlAPI");
WScript.Echo("Library version " + api.Version);
var session;
try {
  session = api.Logon("DOMAIN\\jsmith", false);
} catch (e) {
  WScript.Echo("Logon failed: 0x" + (e.number >>> 0).toString(16).toUpperCase() + " " + e.description);
  WScript.Quit(1);
}
WScript.Echo("Logged on as DOMAIN\\jsmith");
WScript.Echo("  Out directory: " + session.UserOutDir);

var server = session.Server;
if (server.Check()) {
  WScript.Echo("Fax server is running");
} else {
  WScript.Echo("Fax server is not running: starting it");
  server.Start();
  waitFor(server, true, "start");
  WScript.Echo("Fax server started");
}

var message = session.CreateNewMsg();
message.Subject = "Quarterly figures for the sales team";
message.Comment = "Sent by sample_client.js";
message.Text = "Dear all,\r\n\r\nthe quarterly figures are in.\r\n";
message.Recipients.AddFaxRecipient("Ann Archer", "Archer & Co", "02015550101");
message.Recipients.AddFaxRecipient("Bob Baker", "Baker Ltd", "02015550102");
message.Recipients.AddFaxRecipient("Carol Clark", "", "02015550103");
message.Send();
var body = message.Body;
WScript.Echo("Submitted message " + body);

var last = 0, deadline = new Date().getTime() + 60000;
for (;;) {
  var status = session.Outbox.GetMsg(body).GetMsgInfo().Status;
  if (status != last) WScript.Echo("  status " + statusWord(last = status));
  if (last == 30 || last == 31) break;
  if (new Date().getTime() > deadline) {
    WScript.Echo("Message " + body + " not completed within 60 s");
    WScript.Quit(1);
  }
  pause(200);
}
each(session.Outbox.GetMsg(body).GetMsgHistories(), function (entry) {
  WScript.Echo("  history event " + entry.Event + ", addressee " + entry.AddrNum + " " + entry.Name +
               ", " + entry.PagesSent + " page(s), device " + entry.Device);
});
WScript.Echo("Message " + body + " reached " + statusWord(last));

var info = server.GetServerInfo();
WScript.Echo("Server status");
each(info.Devices, function (device) {
  WScript.Echo("  Device " + device.Name + ": status " + device.Status + ", sent OK " + device.NumSendOK);
});
each(info.Links, function (link) { WScript.Echo("  Link to " + link.RemoteServer); });
each(info.Coversheets, function (sheet) { WScript.Echo("  Coversheet " + sheet.Name); });
each(info.Letterheads, function (sheet) { WScript.Echo("  Letterhead " + sheet.Name); });

server.Stop();
waitFor(server, false, "stop");
WScript.Echo("Fax server stopped");
session.Logoff();
