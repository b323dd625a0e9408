#include "directory/server_ad_info.h"

#include <cstdio>
#include <cstring>
#include <strings.h>

#include "directory/distinguished_name.h"
#include "lib/log_writer.h"

namespace vl::directory {
namespace {

constexpr char kParams[] = "VLServerADInfo::GetVLServerParams";
constexpr char kParamsEx[] = "VLServerADInfo::GetVLServerParamsEx()";
constexpr char kSetLists[] = "VLServerADInfo::SetVLServerLists";
constexpr char kBindingInformation[] = "serviceBindingInformation";

const struct {
  const char* key;
  std::string ServerAreas::*area;
} kAreaKeys[] = {{"REQUESTAREA:", &ServerAreas::request},
                 {"SYSTEMAREA:", &ServerAreas::system},
                 {"USERAREA:", &ServerAreas::user},
                 {"SERVERAREA:", &ServerAreas::server},
                 {"ALLUSERAREA:", &ServerAreas::allUser}};

// In the order they are read and reported.
const struct {
  const char* key;
  std::string ServerLists::*setting;
  const char* resultName;
} kListKeys[] = {{"COVLIST:", &ServerLists::coversheets, "hrcov"},
                 {"LETLIST:", &ServerLists::letterheads, "hrlet"},
                 {"PROFILES:", &ServerLists::profiles, "hrprofiles"},
                 {"DEFLET:", &ServerLists::defaultLetterhead, "hrdeflet"},
                 {"DEFCOV:", &ServerLists::defaultCoversheet, "hrdefcov"},
                 {"DEFMSGFORMAT:", &ServerLists::defaultFormat, "hrformat"},
                 {"USEDEFAULT:", &ServerLists::useDefault, "hrusedefault"}};

bool HasKey(const std::string& value, const char* key) {
  return strncasecmp(value.c_str(), key, std::strlen(key)) == 0;
}

// The setting after key in the first value that begins with it.
os::ads::Result Setting(const std::vector<std::string>& values, const char* key,
                        std::string* setting) {
  for (const std::string& value : values) {
    if (!HasKey(value, key)) continue;
    *setting = value.substr(std::strlen(key));
    if (*setting == kEmptyListMarker) setting->clear();
    return os::ads::kOk;
  }
  return os::ads::kPropertyNotFound;
}

const std::string* FirstValue(const os::ads::Row& row, const char* attribute) {
  const std::vector<std::string>* values = row.Values(attribute);
  return values && !values->empty() ? &values->front() : nullptr;
}

}  // namespace

os::ads::Result FindServerObjects(VLADInfo* ad, const char* operation, bool withSettings,
                                  std::vector<os::ads::Row>* rows) {
  os::ads::Result hr = ad->Bind(operation);
  if (os::ads::Failed(hr)) return hr;
  char filter[80];
  std::snprintf(filter, sizeof filter, "(&(CN=%s)(objectClass=serviceConnectionPoint))",
                "VelomarServer");
  std::vector<std::string> attributes = {"name", "CN", "distinguishedname"};
  if (withSettings) attributes.push_back(kBindingInformation);
  hr = ad->SearchPtr()->Execute(filter, attributes, rows);
  LogWrite(1, "%s - Return from ExecuteSearch (%x)", operation, static_cast<unsigned>(hr));
  return hr;
}

os::ads::Result VLServerADInfo::GetVLServerParams(ServerAreas* areas) {
  LogWrite(1, "%s", kParams);
  rows_.clear();
  bindingInformation_ = nullptr;
  os::ads::Result hr = FindServerObjects(&ad_, kParams, true, &rows_);
  if (os::ads::Failed(hr)) return hr;
  for (const os::ads::Row& row : rows_) {
    const std::string* dn = FirstValue(row, "distinguishedName");
    std::string computer;
    if (!dn || !ComputerOf(*dn, &computer) || strcasecmp(computer.c_str(), name_.c_str()) != 0)
      continue;
    LogWrite(1, "%s - Found match for %s", kParams, name_.c_str());
    bindingInformation_ = row.Values(kBindingInformation);
    if (bindingInformation_) {
      for (const auto& key : kAreaKeys) Setting(*bindingInformation_, key.key, &(areas->*key.area));
    }
    return os::ads::kOk;
  }
  return os::ads::kNotFound;
}

os::ads::Result VLServerADInfo::GetVLServerParamsEx(ServerAreas* areas, ServerLists* lists) {
  os::ads::Result hr = GetVLServerParams(areas);
  if (os::ads::Failed(hr)) {
    LogWrite(2, "%s - Failed to GetVLServerParams for %s (%x)", kParamsEx, name_.c_str(),
             static_cast<unsigned>(hr));
    return hr;
  }
  if (!bindingInformation_) {
    hr = os::ads::kColumnNotSet;
    LogWrite(2, "Couldn't find serviceBindingInfo area for %s (%x)", name_.c_str(),
             static_cast<unsigned>(hr));
    return hr;
  }
  os::ads::Result results[std::size(kListKeys)];
  bool anyFound = false;
  for (size_t i = 0; i < std::size(kListKeys); ++i) {
    results[i] = Setting(*bindingInformation_, kListKeys[i].key, &(lists->*kListKeys[i].setting));
    anyFound |= !os::ads::Failed(results[i]);
  }
  if (!anyFound) {
    for (size_t i = 0; i < std::size(kListKeys); ++i)
      LogWrite(2, "Failed in getting one of the AD props from serviceBindingInformation of %s (%s = %x)",
               name_.c_str(), kListKeys[i].resultName, static_cast<unsigned>(results[i]));
    hr = 1;
  }
  LogWrite(1, "%s -  Returning (%x)", kParamsEx, static_cast<unsigned>(hr));
  return hr;
}

os::ads::Result VLServerADInfo::SetVLServerLists(const std::string& coversheets,
                                                 const std::string& letterheads,
                                                 const std::string& profiles) {
  LogWrite(1, "%s", kSetLists);
  rows_.clear();
  os::ads::Result hr = FindServerObjects(&ad_, kSetLists, true, &rows_);
  if (os::ads::Failed(hr)) return hr;
  const struct {
    const char* key;
    const std::string& list;
  } written[] = {{"COVLIST:", coversheets}, {"LETLIST:", letterheads}, {"PROFILES:", profiles}};
  os::ads::Result first = os::ads::kOk;
  for (const os::ads::Row& row : rows_) {
    const std::string* dn = FirstValue(row, "distinguishedName");
    std::string computer;
    if (!dn || !ComputerOf(*dn, &computer)) continue;
    // The other settings stay; the three lists are replaced.
    std::vector<std::string> values;
    if (const std::vector<std::string>* old = row.Values(kBindingInformation)) {
      for (const std::string& value : *old) {
        bool replaced = false;
        for (const auto& list : written) replaced |= HasKey(value, list.key);
        if (!replaced) values.push_back(value);
      }
    }
    for (const auto& list : written)
      values.push_back(list.key + (list.list.empty() ? std::string(kEmptyListMarker) : list.list));
    hr = os::ads::ReplaceValues(LdapPath(*dn), kBindingInformation, values);
    LogWrite(os::ads::Failed(hr) ? 2 : 1,
             profiles.empty() ? "Set on profileslist is empty and chr255 %s (%x)"
                              : "Set on profileslist is not empty and chr255 %s (%x)",
             computer.c_str(), static_cast<unsigned>(hr));
    if (strcasecmp(computer.c_str(), name_.c_str()) == 0)
      LogWrite(1, "Placing in current server if chr255 (%x)", static_cast<unsigned>(hr));
    if (os::ads::Failed(hr) && !os::ads::Failed(first)) first = hr;
  }
  return first;
}

}  // namespace vl::directory
