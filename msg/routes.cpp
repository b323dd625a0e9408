#include "msg/routes.h"

#include "paragraph/paragraph_reader.h"

namespace vl {
namespace {

// Not in numeric order: rows are searched from the first, as they stand.
const Route kRoutes[] = {
    {100, "FAX-ANY", "Fax", 0x20000},
    {101, "PRINTER-ANY", "Printer", 0x40000},
    {102, "FAX-PRINTER-ANY", "Fax printer", 0x40000},
    {103, "HP-PRINTER-ANY", "Laserjet printer", 0x40000},
    {104, "PS-PRINTER-ANY", "Postscript printer", 0x40000},
    {105, "LAN-ANY", "LAN", 0x400000},
    {106, "PREVIEW-ANY", "Preview", 0x800000},
    {107, "SMS-ANY", "Short Messaging Service", 0x1000000},
    {0, "none", "none", 0x10000},
    {1, "BINARY", "File transfer", 0x200001},
    {2, "FAX", "Fax", 0x20005},
    {3, "FAX-FINE", "Fax fine", 0x20006},
    {4, "FAX-SFINE", "Fax s/fine", 0x20007},
    {5, "HQFAX", "HQ-fax", 0x20008},
    {6, "FAX-ASCII", "ASCII fax", 0x20002},
    {7, "EMAIL", "Email", 0x80002},
    {8, "PS-PRINTER", "Postscript printer", 0x40003},
    {10, "HP-PRINTER-DRAFT", "Laserjet 100 dpi", 0x40009},
    {11, "HP-PRINTER", "Laserjet 300 dpi", 0x4000a},
    {13, "SCAN", "Scan", 0x100005},
    {14, "SCAN-FINE", "Scan fine", 0x100006},
    {15, "SCAN-SUPERFINE", "Scan s/fine", 0x100007},
    {16, "FAX-PRINTER", "Fax print", 0x40005},
    {17, "FAX-PRINTER-FINE", "Fax print fine", 0x40006},
    {18, "FAX-PRINTER-SFINE", "Fax print s/fine", 0x40007},
    {19, "LAN", "LAN", 0x400005},
    {20, "LAN-FINE", "LAN fine", 0x400006},
    {21, "LAN-SUPERFINE", "LAN s/fine", 0x400007},
    {22, "PREVIEW", "Preview", 0x800005},
    {23, "PREVIEW-FINE", "Preview fine", 0x800006},
    {24, "PREVIEW-SUPERFINE", "Preview s/fine", 0x800007},
    {27, "PREVIEW-ASCII", "Preview text", 0x800002},
    {25, "SMS", "Short Messaging Service", 0x1000002},
    {31, "DIAL-INTERNAL", "Internal numbers", 0x10000},
    {30, "FAX-INCOMING", "Incoming faxes", 0x10000},
    {29, "SMS-INCOMING", "Incoming SMS", 0x10000},
};

}  // namespace

std::span<const Route> Routes() { return kRoutes; }

const Route* RouteByWord(const char* word) {
  for (const Route& r : kRoutes)
    if (para::EqualNoCase(r.word, word)) return &r;
  return nullptr;
}

const Route* RouteByCode(uint16_t code) {
  for (const Route& r : kRoutes)
    if (r.code == code) return &r;
  return nullptr;
}

}  // namespace vl
