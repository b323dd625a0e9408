// The route table: how a route word of a history line becomes a route code.
#pragma once

#include <cstdint>
#include <span>

namespace vl {

struct Route {
  uint16_t code;
  const char* word;
  const char* description;
  // Upper half: the route's group (0x20000 fax, 0x40000 printer, 0x80000
  // e-mail, 0x100000 scan, 0x200000 file transfer, 0x400000 LAN, 0x800000
  // preview, 0x1000000 SMS, 0x10000 other); lower half: resolution or format.
  uint32_t classWord;
};

// The rows in the order they are searched.
std::span<const Route> Routes();

// The first row whose word equals word without regard to case, or none.
const Route* RouteByWord(const char* word);
// The first row with the code, or none.
const Route* RouteByCode(uint16_t code);

}  // namespace vl
