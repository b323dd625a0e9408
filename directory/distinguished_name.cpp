#include "directory/distinguished_name.h"

#include <cctype>

namespace vl::directory {
namespace {

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

}  // namespace

std::vector<std::string> SplitDistinguishedName(std::string_view name) {
  std::vector<std::string> elements(1);
  for (size_t i = 0; i < name.size(); ++i) {
    char c = name[i];
    if (c == '\\' && i + 1 < name.size()) {
      elements.back() += c;
      elements.back() += name[++i];
    } else if (c == ',') {
      elements.emplace_back();
    } else {
      elements.back() += c;
    }
  }
  return elements;
}

bool CommonNameOf(std::string_view element, std::string* value) {
  if (element.size() < 3 || std::toupper(static_cast<unsigned char>(element[0])) != 'C' ||
      std::toupper(static_cast<unsigned char>(element[1])) != 'N' || element[2] != '=')
    return false;
  value->clear();
  for (size_t i = 3; i < element.size(); ++i) {
    char c = element[i];
    if (c != '\\' || i + 1 >= element.size()) {
      *value += c;
    } else if (i + 2 < element.size() && HexDigit(element[i + 1]) >= 0 &&
               HexDigit(element[i + 2]) >= 0) {
      *value += static_cast<char>(HexDigit(element[i + 1]) * 16 + HexDigit(element[i + 2]));
      i += 2;
    } else {
      *value += element[++i];
    }
  }
  return true;
}

bool ComputerOf(std::string_view distinguishedName, std::string* computer) {
  std::vector<std::string> elements = SplitDistinguishedName(distinguishedName);
  return elements.size() >= 2 && CommonNameOf(elements[1], computer);
}

}  // namespace vl::directory
