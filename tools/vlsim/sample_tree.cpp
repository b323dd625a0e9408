#include "tools/vlsim/sample_tree.h"

#include "platform/os.h"
#include "tools/vlsim/settings.h"
#include "tools/vlsim/text_lines.h"

namespace vlsim {
namespace {

// Writes a file afresh, replacing an older one.
bool Write(const std::string& path, const Lines& lines) {
  os::RemoveFile(path.c_str());
  return CreateNewFile(path, lines) == 0;
}

bool MakeDirectory(const std::string& path) {
  int error = os::MakeDirectory(path.c_str());
  return error == os::kOk || error == os::kAlreadyExists;
}

}  // namespace

std::string MakeSampleTree(const std::string& root, const std::vector<std::string>& users) {
  const Areas areas = TreeAreas(root);
  std::vector<std::string> directories = {
      root, areas.system, areas.system + "V-DB\\", areas.system + "V-COVER\\",
      areas.system + "V-LETTER\\", areas.server, areas.server + "V-DB\\", areas.request,
      areas.user};
  for (const std::string& user : users)
    for (const char* sub : {"", "V-DB\\", "V-OUT\\", "V-IN\\"})
      directories.push_back(areas.user + user + "\\" + sub);
  for (const std::string& directory : directories)
    if (!MakeDirectory(directory)) return "cannot create " + directory;

  Lines userList = {"[VELOMAR]", "Type: UserList", "Revision: A"};
  for (const std::string& user : users) {
    std::string account = user;
    for (char& c : account)
      if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    userList.insert(userList.end(), {"", "[USER]", "Username: " + account, "Name: " + user});
  }
  const std::string program = areas.server + "vlsim.exe";
  const struct {
    std::string path;
    Lines lines;
  } files[] = {
      {areas.system + "V-DB\\USERLIST.INI", userList},
      {areas.system + "V-DB\\SETUP.INI",
       {"[VELOMAR]", "Type: Setup", "Revision: A", "", "[SERVER]", "Sysman: VLSIM, vlsim.exe",
        "SimDevices: 2", "SimStepDelayMS: 700", "SimFailNumbers: 02015550999",
        "SimLinks: PARIS", "", "[OPTIONS]", "LogKeepDays: 7"}},
      {TreeConfigPath(root),
       {"[VELOMAR]", "Type: ServerConfig", "Revision: A", "", "[SERVER]",
        "AllUserArea: " + areas.user, "RequestArea: " + areas.request,
        "SystemArea: " + areas.system, "ServerArea: " + areas.server}},
      {areas.system + "V-COVER\\STANDARD.CVR", {"Standard coversheet"}},
      {areas.system + "V-COVER\\URGENT.CVR", {"Urgent coversheet"}},
      {areas.system + "V-LETTER\\COMPANY.LTR", {"Company letterhead"}},
  };
  for (const auto& file : files)
    if (!Write(file.path, file.lines)) return "cannot write " + file.path;
  const Lines defaults = {"[VELOMAR]", "Type: UserDefaults", "Revision: A", "", "[OPTIONS]",
                         "Coversheet: STANDARD"};
  if (!Write(areas.system + "V-DB\\USER.INI", defaults)) return "cannot write USER.INI";
  for (const std::string& user : users) {
    const std::string base = areas.user + user + "\\";
    if (!Write(base + "V-DB\\USER.INI", {"[VELOMAR]", "Type: UserDefaults", "Revision: A", "",
                                         "[OPTIONS]", "From: " + user}) ||
        !Write(base + "V-OUT\\MSGDIR.CTL", {"[VELOMAR]", "Type: SendDir", "Revision: A"}) ||
        !Write(base + "V-IN\\MSGDIR.CTL", {"[VELOMAR]", "Type: ReceiveDir", "Revision: A"}))
      return "cannot write the lists of " + user;
  }
  if (os::CopyFileReplacing(os::ExecutablePath().c_str(), program.c_str()) != 0)
    return "cannot copy this program to " + program;
  return "";
}

std::string WriteClientConfig(const std::string& root) {
  std::string folder;
  if (os::AppDataFolder(&folder) != 0) return "";
  const std::string directory = folder + "Ornavex\\Velomar Client\\";
  MakeDirectory(folder);
  MakeDirectory(folder + "Ornavex\\");
  MakeDirectory(directory);
  const Areas areas = TreeAreas(root);
  const std::string path = directory + "VLCLIENT.INI";
  bool written = Write(path, {"[VELOMAR]", "Type: ClientConfig", "Revision: A", "",
                              "[WORKSTATION]", "AllUserArea: " + areas.user,
                              "RequestArea: " + areas.request, "SystemArea: " + areas.system,
                              "ServerArea: " + areas.server});
  return written ? path : "";
}

}  // namespace vlsim
