// Distinguished names as the directory hands them out:
// "CN=VelomarServer,CN=computer,OU=...,DC=...".
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vl::directory {

// The elements of a distinguished name, split at the commas that are not
// escaped with a backslash; each element keeps its text as written.
std::vector<std::string> SplitDistinguishedName(std::string_view name);

// The value of an element "CN=value" with its escapes resolved ("\," and
// "\2C" both give a comma); false when the element does not start with
// "CN=" (in any case).
bool CommonNameOf(std::string_view element, std::string* value);

// The computer that a service connection point belongs to: the common name
// of the name's second element; false when there is none.
bool ComputerOf(std::string_view distinguishedName, std::string* computer);

}  // namespace vl::directory
